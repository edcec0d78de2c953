// The studio's page: the folder's models (#/) and one model (#/model/ID), with its 3D view,
// info, command listing and repairs.
import { get, getText, modelPath } from './api.js';
import { $, status } from './dom.js';
import { setUpFolder, showFolder } from './grid.js';
import { showInfo } from './info.js';
import { Listing } from './listing.js';
import { modelRepairs } from './repairs.js';
import { ScenarioControls } from './scenario.js';
import { ModelView } from './view3d.js';

let view = null;
let listing = null;

function showPane(name) {
  for (const button of document.querySelectorAll('#tabs button')) {
    button.classList.toggle('on', button.dataset.pane === name);
  }
  for (const pane of ['info', 'listing', 'repairs']) $(pane).hidden = pane !== name;
  if (name === 'listing') listing.draw();
}

async function showModel(id) {
  view ??= new ModelView($('view'));
  listing ??= new Listing($('listing'));
  const [records, known] = await Promise.all([get('/api/models'), get(modelPath(id, 'scenario'))]);
  const record = records.find((r) => r.id === id);
  if (!record) return status('No model has this id.', true);
  const title = record.editable ? record.file : `${record.file} #${record.model}`;
  $('where').textContent = title;

  let info = null;
  const controls = new ScenarioControls($('scenario'), known, () => redraw(false));
  const redraw = async (reframe) => {
    const query = controls.query();
    try {
      const [, reversed] = await Promise.all([
        view.show(`${modelPath(id, 'model.glb')}?${query}`, reframe),
        get(`${modelPath(id, 'reversed')}?${query}`),
      ]);
      view.mark(controls.reversed.checked ? reversed.triangles : []);
    } catch (error) {
      status(error.message ?? String(error), true);
    }
  };
  controls.bothSides.addEventListener('change', () =>
    view.setBothSides(controls.bothSides.checked),
  );
  controls.reversed.addEventListener('change', () => redraw(false));

  const showState = async (newInfo) => {
    info = newInfo;
    showInfo($('info'), info, title, (position) => {
      showPane('listing');
      listing.goTo(position);
    });
    const commands = await getText(modelPath(id, 'commands.txt'));
    listing.show(commands.split('\n').filter(Boolean), info.reversedTriangles);
    document.body.dataset.guard = info.guard.formula;
  };
  modelRepairs($('repairs'), record, async (newInfo) => {
    await showState(newInfo);
    await redraw(false);
  });
  await Promise.all([showState(await get(modelPath(id))), redraw(true)]);
}

async function route() {
  const match = location.hash.match(/^#\/model\/([0-9a-f]{12})$/);
  $('folder-view').hidden = Boolean(match);
  $('model-view').hidden = !match;
  try {
    if (match) await showModel(match[1]);
    else await showFolder();
  } catch (error) {
    status(error.message ?? String(error), true);
  }
}

// The token came in the address and now lives in the page's cookie: keep it out of the history.
if (location.search.includes('token=')) history.replaceState(null, '', '/' + location.hash);
for (const button of document.querySelectorAll('#tabs button')) {
  button.addEventListener('click', () => showPane(button.dataset.pane));
}
setUpFolder();
window.addEventListener('hashchange', route);
route();
