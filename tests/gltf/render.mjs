// Renders a .glb with three.js in headless Chromium and writes a PNG screenshot.
// Usage: node render.mjs MODEL.glb OUT.png WIDTH HEIGHT EYE_X EYE_Y EYE_Z AT_X AT_Y AT_Z
//        FOV_Y NEAR FAR BACKGROUND_HEX
import { chromium } from 'playwright-core';
import { createServer } from 'node:http';
import { readFileSync, writeFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';

const [model, out, width, height, ex, ey, ez, ax, ay, az, fov, near, far, background] =
  process.argv.slice(2);
const threeRoot = join(dirname(fileURLToPath(import.meta.url)), 'node_modules', 'three');

const page = `<!doctype html><html><body style="margin:0">
<script type="importmap">{"imports":{"three":"/three/build/three.module.js",
  "three/addons/":"/three/examples/jsm/"}}</script>
<script type="module">
import * as THREE from 'three';
import { GLTFLoader } from 'three/addons/loaders/GLTFLoader.js';
const renderer = new THREE.WebGLRenderer({ antialias: false, preserveDrawingBuffer: true });
renderer.setPixelRatio(1);
renderer.setSize(${width}, ${height});
document.body.appendChild(renderer.domElement);
const scene = new THREE.Scene();
scene.background = new THREE.Color(0x${background});
scene.add(new THREE.AmbientLight(0xffffff, 1.5));
const sun = new THREE.DirectionalLight(0xffffff, 2);
sun.position.set(1, 2, 1);
scene.add(sun);
const camera = new THREE.PerspectiveCamera(${fov}, ${width} / ${height}, ${near}, ${far});
camera.position.set(${ex}, ${ey}, ${ez});
camera.lookAt(${ax}, ${ay}, ${az});
new GLTFLoader().load('/model.glb', (gltf) => {
  scene.add(gltf.scene);
  renderer.render(scene, camera);
  window.rendered = true;
}, undefined, (error) => { window.failed = String(error); });
</script></body></html>`;

const server = createServer((request, response) => {
  try {
    const url = decodeURIComponent(request.url);
    let body;
    let type = 'application/octet-stream';
    if (url === '/') { body = page; type = 'text/html'; }
    else if (url === '/model.glb') { body = readFileSync(model); type = 'model/gltf-binary'; }
    else if (url.startsWith('/three/')) {
      body = readFileSync(join(threeRoot, url.slice('/three/'.length)));
      type = 'text/javascript';
    }
    if (body === undefined) { response.writeHead(404); response.end(); return; }
    response.writeHead(200, { 'Content-Type': type });
    response.end(body);
  } catch (error) {
    response.writeHead(404);
    response.end(String(error));
  }
});
await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));

const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
  args: ['--no-sandbox', '--use-angle=swiftshader', '--enable-unsafe-swiftshader',
    '--disable-background-networking', '--disable-component-update', '--disable-sync',
    '--no-first-run', '--disable-quic'],
});
let status = 0;
try {
  const tab = await browser.newPage({ viewport: { width: Number(width), height: Number(height) } });
  await tab.goto(`http://127.0.0.1:${server.address().port}/`);
  await tab.waitForFunction(() => window.rendered || window.failed, null, { timeout: 60000 });
  const failed = await tab.evaluate(() => window.failed);
  if (failed) throw new Error(failed);
  writeFileSync(out, await tab.locator('canvas').screenshot());
} catch (error) {
  console.error(String(error));
  status = 1;
} finally {
  await browser.close();
  server.close();
}
process.exit(status);
