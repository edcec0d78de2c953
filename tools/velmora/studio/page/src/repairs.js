// The repairs: every edit the tool's edit command makes, previewed as an unsaved edit, then
// saved in place or under a new name, or undone.
import { post, modelPath } from './api.js';
import { el, fill, status } from './dom.js';

const lines = (text) =>
  text
    .split('\n')
    .map((line) => line.trim())
    .filter(Boolean);

// The form of the edit options; read() gives them by the edit command's long names.
function repairForm() {
  const conditions = el('textarea', { rows: 3, placeholder: 'between 798 3 5\nmask 250 1' });
  const combine = el(
    'select',
    {},
    ['and', 'or', 'not', 'nor'].map((c) => el('option', {}, c)),
  );
  const clear = el('input', { type: 'checkbox' });
  const rotate = el(
    'select',
    {},
    el('option', { value: '' }, 'keep'),
    el('option', { value: 'user' }, 'user'),
    el('option', { value: 'wind' }, 'wind'),
  );
  const shadow = el(
    'select',
    {},
    el('option', { value: '' }, 'keep'),
    el('option', { value: 'add-kill-shadow' }, 'add kill shadow'),
    el('option', { value: 'remove-kill-shadow' }, 'remove shadow section'),
  );
  const seasons = el('textarea', { rows: 2, placeholder: 'wall.bmp:winter=wall_winter.bmp' });
  const sizes = el('textarea', { rows: 2, placeholder: 'wall.bmp=20' });
  const measure = el('textarea', { rows: 2, placeholder: 'wall.bmp' });
  const isft = el('input', { type: 'text', placeholder: 'leave as it is' });
  const flags = {
    'fix-lights': 'Free lights of the tests in front of them',
    'fix-winding': 'Turn reversed triangles round',
    'recalc-texture-sizes': "Measure every texture's size",
    'clean-dict': 'Empty the DICT section',
  };
  const boxes = Object.fromEntries(
    Object.keys(flags).map((name) => [name, el('input', { type: 'checkbox', name })]),
  );
  const node = el(
    'div',
    {},
    el(
      'fieldset',
      {},
      el('legend', {}, 'Conditions'),
      el('label', {}, 'One per line: between VAR MIN MAX, mask VAR VALUE', conditions),
      el('label', {}, 'Combined by ', combine),
      el('label', {}, clear, ' remove the present conditions first'),
      el('label', {}, 'Rotation ', rotate),
    ),
    el(
      'fieldset',
      {},
      el('legend', {}, 'Textures'),
      el('label', {}, 'Seasons, one per line: TEXTURE:SEASON=NAME[@FIRST-LAST],...', seasons),
      el('label', {}, 'Sizes, one per line: TEXTURE=SIZE', sizes),
      el('label', {}, 'Measure from the geometry, one texture per line', measure),
    ),
    el(
      'fieldset',
      {},
      el('legend', {}, 'Model'),
      el('label', {}, 'Shadow ', shadow),
      Object.entries(flags).map(([name, text]) => el('label', {}, boxes[name], ' ' + text)),
      el('label', {}, 'ISFT text', isft),
    ),
  );
  const read = () => {
    const options = {};
    if (lines(conditions.value).length) {
      options.condition = lines(conditions.value);
      options.combine = combine.value;
    }
    if (clear.checked) options['clear-conditions'] = true;
    if (rotate.value) options.rotate = rotate.value;
    if (shadow.value) options[shadow.value] = true;
    if (lines(seasons.value).length) options.seasons = lines(seasons.value);
    if (lines(sizes.value).length) options['texture-size'] = lines(sizes.value);
    if (lines(measure.value).length) options['recalc-texture-size'] = lines(measure.value);
    for (const [name, box] of Object.entries(boxes)) if (box.checked) options[name] = true;
    if (isft.value) options['set-isft'] = isft.value;
    return options;
  };
  const reset = () => {
    for (const field of node.querySelectorAll('textarea, input[type=text]')) field.value = '';
    for (const box of node.querySelectorAll('input[type=checkbox]')) box.checked = false;
    for (const list of node.querySelectorAll('select')) list.selectedIndex = 0;
  };
  return { node, read, reset };
}

// What the tool says of a refusal, with a button that makes the edit anyway.
function refusalBox(refused, onForce) {
  return el(
    'div',
    { class: 'refusal', role: 'alert' },
    refused.message,
    el('div', { class: 'actions' }, el('button', { onclick: onForce }, 'Force this edit')),
  );
}

// The repairs of one model. `model` is its record; `changed(info)` is told the model's info after
// each change.
export function modelRepairs(container, model, changed) {
  const form = repairForm();
  const outcome = el('div');
  const unsaved = el('p', { class: 'note' });
  const undo = el('button', { onclick: () => run('undo') }, 'Undo');
  const save = el('button', { class: 'primary', onclick: () => run('save') }, 'Save');
  const saveAs = el('button', { onclick: () => askName() }, 'Save as…');
  let steps = model.unsaved ?? 0;

  const show = () => {
    unsaved.textContent = steps
      ? `${steps} unsaved edit${steps === 1 ? '' : 's'}: previewed, not yet written.`
      : 'No unsaved edits.';
    undo.disabled = steps === 0;
    save.disabled = steps === 0 || !model.editable;
    save.title = model.editable ? '' : 'A model inside a compiled file is saved with Save as';
  };

  async function preview(force) {
    const options = form.read();
    if (!Object.keys(options).length) return status('Choose an edit first.', true);
    if (force) options.force = true;
    outcome.replaceChildren();
    try {
      const info = await post(modelPath(model.id, 'edit'), { ...options, save: false });
      steps += 1;
      form.reset();
      status('Previewed; Save writes it.');
      changed(info);
    } catch (error) {
      if (error.refused) outcome.append(refusalBox(error.refused, () => preview(true)));
      else outcome.append(el('div', { class: 'refusal', role: 'alert' }, error.message));
    }
    show();
  }

  async function run(what, body = {}) {
    outcome.replaceChildren();
    try {
      const answer = await post(modelPath(model.id, what), body);
      if (what === 'undo') steps -= 1;
      if (what === 'save') steps = 0;
      status(what === 'undo' ? 'Undone.' : `Saved ${body.as ?? model.file}.`);
      if (body.as) location.hash = `#/model/${answer.id}`;
      else changed(answer);
    } catch (error) {
      outcome.append(el('div', { class: 'refusal', role: 'alert' }, error.message));
    }
    show();
  }

  function askName() {
    const base = model.file
      .split('/')
      .pop()
      .replace(/\.[^.]*$/, '');
    const name = prompt('Save as (a file name beside the model):', `${base}-edited.mdl`);
    if (name) run('save', { as: name });
  }

  fill(container, [
    el(
      'div',
      { class: 'actions' },
      el('button', { class: 'primary', onclick: () => preview(false) }, 'Preview edit'),
      undo,
      save,
      saveAs,
    ),
    unsaved,
    outcome,
    form.node,
  ]);
  show();
}

// The repairs of several models at once: the edit is previewed on each, then saved or undone on
// each that took it.
export function batchRepairs(container, selected, changed) {
  const form = repairForm();
  const results = el('ul', { class: 'results' });
  let edited = [];
  const saveAll = el('button', { class: 'primary', onclick: () => finish('save') }, 'Save all');
  const undoAll = el('button', { onclick: () => finish('undo') }, 'Undo all');
  const force = el('input', { type: 'checkbox' });

  const show = () => {
    saveAll.disabled = undoAll.disabled = edited.length === 0;
  };

  async function apply() {
    const options = form.read();
    const models = selected();
    if (!models.length) return status('Select models first.', true);
    if (!Object.keys(options).length) return status('Choose an edit first.', true);
    if (force.checked) options.force = true;
    results.replaceChildren();
    edited = [];
    for (const model of models) {
      try {
        await post(modelPath(model.id, 'edit'), { ...options, save: false });
        edited.push(model);
        results.append(el('li', {}, `${model.file}: edited`));
      } catch (error) {
        results.append(el('li', { class: 'failed' }, `${model.file}: ${error.message}`));
      }
    }
    show();
    changed();
  }

  async function finish(what) {
    for (const model of edited) {
      try {
        await post(modelPath(model.id, what), {});
      } catch (error) {
        results.append(el('li', { class: 'failed' }, `${model.file}: ${error.message}`));
      }
    }
    status(what === 'save' ? `Saved ${edited.length} models.` : 'Undone.');
    edited = [];
    show();
    changed();
  }

  fill(container, [
    el('h2', {}, 'Repair the selection'),
    el(
      'div',
      { class: 'actions' },
      el('button', { class: 'primary', onclick: apply }, 'Preview on selection'),
      saveAll,
      undoAll,
    ),
    el('label', {}, force, ' force (make edits the tool would refuse)'),
    results,
    form.node,
  ]);
  show();
}
