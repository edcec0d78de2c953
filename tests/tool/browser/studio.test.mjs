// Drives the studio's page in Chromium: the folder's thumbnails, a model's 3D view, a season
// that changes the walls' texture, and a condition added, saved and read back.
// Usage: node studio.test.mjs VELMORA VELMORA_MAKE_SAMPLES OUTPUT_FOLDER
import puppeteer from 'puppeteer-core';
import assert from 'node:assert/strict';
import { spawn, execFileSync } from 'node:child_process';
import { mkdtempSync, mkdirSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { createInterface } from 'node:readline';
import { test, after, before } from 'node:test';
import { fileURLToPath } from 'node:url';

const [tool, makeSamples, output] = process.argv.slice(2);
const here = dirname(fileURLToPath(import.meta.url));
const work = mkdtempSync(join(tmpdir(), 'velmora-studio-page-'));
const samples = join(work, 'samples');
mkdirSync(output, { recursive: true });
execFileSync(makeSamples, [samples], { stdio: 'ignore' });

let studio;
let browser;
let tab;

// The studio's address, from the first line it prints.
function startStudio() {
  studio = spawn(tool, ['studio', samples, '--no-browser'], {
    stdio: ['ignore', 'pipe', 'inherit'],
    env: {
      ...process.env,
      LSAN_OPTIONS: `suppressions=${join(here, '..', 'lsan-suppressions.txt')}`,
    },
  });
  return new Promise((resolve, reject) => {
    createInterface({ input: studio.stdout }).once('line', resolve);
    studio.once('exit', (code) => reject(new Error(`velmora studio exited with ${code}`)));
  });
}

// The share of the 3D view's pixels that are not the sky behind the model, and the pixels.
const viewPixels = () =>
  tab.evaluate(async () => {
    const canvas = document.querySelector('#view canvas');
    const image = new Image();
    image.src = canvas.toDataURL('image/png');
    await image.decode();
    const copy = new OffscreenCanvas(canvas.width, canvas.height);
    const context = copy.getContext('2d');
    context.drawImage(image, 0, 0);
    const { data } = context.getImageData(0, 0, canvas.width, canvas.height);
    let model = 0;
    for (let i = 0; i < data.length; i += 4) {
      const sky =
        Math.abs(data[i] - 0x9e) + Math.abs(data[i + 1] - 0xb9) + Math.abs(data[i + 2] - 0xd9);
      if (sky > 12) model += 1;
    }
    return { share: model / (data.length / 4), data: Array.from(data) };
  });

const loads = () => tab.$eval('#view', (view) => Number(view.dataset.loads ?? 0));
const waitForLoads = (n) =>
  tab.waitForFunction(
    (n) => Number(document.querySelector('#view').dataset.loads ?? 0) >= n,
    { timeout: 60000 },
    n,
  );

before(async () => {
  const address = await startStudio();
  browser = await puppeteer.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    headless: true,
    args: [
      '--no-sandbox',
      '--use-angle=swiftshader',
      '--enable-unsafe-swiftshader',
      '--disable-background-networking',
      '--disable-component-update',
      '--no-first-run',
    ],
  });
  tab = await browser.newPage();
  await tab.setViewport({ width: 1400, height: 860 });
  tab.on('pageerror', (error) => console.error(`page error: ${error.message}`));
  await tab.goto(address);
});

after(async () => {
  await browser?.close();
  studio?.kill('SIGTERM');
  rmSync(work, { recursive: true, force: true });
});

test('the folder shows a thumbnail of every model', async () => {
  await tab.waitForSelector('.card img');
  const names = await tab.$$eval('.card .name', (nodes) => nodes.map((n) => n.textContent));
  assert.deepEqual(names.sort(), [
    'building.mdl',
    'lightpad.mdl',
    'scenery.bgl #1',
    'scenery.bgl #2',
    'scenery.bgl #3',
    'tree.mdl',
  ]);
  await tab.waitForFunction(
    () => [...document.querySelectorAll('.card img')].every((i) => i.complete),
    { timeout: 60000 },
  );
  const sizes = await tab.$$eval('.card img', (images) =>
    images.map((i) => `${i.naturalWidth}x${i.naturalHeight}`),
  );
  assert.deepEqual(new Set(sizes), new Set(['256x192']));
  // The filters narrow the grid.
  await tab.click('#filter-lights');
  assert.deepEqual(await tab.$$eval('.card .name', (n) => n.map((x) => x.textContent)), [
    'lightpad.mdl',
    'scenery.bgl #2',
  ]);
  await tab.click('#filter-lights');
  await tab.screenshot({ path: join(output, 'studio-folder.png') });
});

test('a model opens in a 3D view that shows it', async () => {
  await tab.click('.card img[alt="building.mdl"]');
  await waitForLoads(1);
  await tab.waitForSelector('#guard-formula');
  const { share } = await viewPixels();
  assert.ok(share > 0.02 && share < 0.9, `the model covers ${share} of the view`);
  await tab.screenshot({ path: join(output, 'studio.png') });
});

test('winter changes the walls', async () => {
  const summer = await viewPixels();
  const before = await loads();
  await tab.select('#season', 'winter');
  await waitForLoads(before + 1);
  const winter = await viewPixels();
  let changed = 0;
  for (let i = 0; i < summer.data.length; i += 4) {
    if (
      Math.abs(summer.data[i] - winter.data[i]) +
        Math.abs(summer.data[i + 1] - winter.data[i + 1]) +
        Math.abs(summer.data[i + 2] - winter.data[i + 2]) >
      30
    )
      changed += 1;
  }
  // Only the texture changes: the silhouette stays, the walls' pixels don't.
  assert.ok(Math.abs(summer.share - winter.share) < 0.01, 'the silhouette changed');
  assert.ok(changed / (summer.data.length / 4) > 0.01, `only ${changed} pixels changed`);
});

test('a condition added and saved changes the file, and a reload shows the new guard', async () => {
  const file = join(samples, 'building.mdl');
  const bytes = readFileSync(file);
  await tab.click('#tabs button[data-pane="repairs"]');
  await tab.type('#repairs textarea', 'between 500 1 2');
  await tab.$$eval('#repairs button', (buttons) =>
    buttons.find((b) => b.textContent === 'Preview edit').click(),
  );
  await tab.waitForFunction(() => document.body.dataset.guard?.includes('500 in 1..2'), {
    timeout: 30000,
  });
  assert.deepEqual(readFileSync(file), bytes, 'a preview wrote the file');
  await tab.$$eval('#repairs button', (buttons) =>
    buttons.find((b) => b.textContent === 'Save').click(),
  );
  await tab.waitForFunction(
    () => document.getElementById('status').textContent.startsWith('Saved'),
    { timeout: 30000 },
  );
  const info = JSON.parse(execFileSync(tool, ['info', '--json', file]).toString());
  assert.equal(info.guard.formula, '798 in 2..5 and 500 in 1..2');
  await tab.reload();
  await tab.waitForSelector('#guard-formula');
  assert.equal(
    await tab.$eval('#guard-formula', (n) => n.textContent),
    '798 in 2..5 and 500 in 1..2',
  );
});
