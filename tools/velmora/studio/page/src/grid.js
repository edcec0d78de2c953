// The folder: a card for each model with its thumbnail, filters and a selection.
import { get, modelPath } from './api.js';
import { el, fill, $, status } from './dom.js';
import { batchRepairs } from './repairs.js';

let models = [];
const selection = new Set();

const filters = [
  'filter-name',
  'filter-guard',
  'filter-reversed',
  'filter-seasons',
  'filter-lights',
];

function shown(model) {
  const name = $('filter-name').value.trim().toLowerCase();
  const guard = $('filter-guard').value.trim().toLowerCase();
  if (name && !`${model.folder}/${model.file}`.toLowerCase().includes(name)) return false;
  if (guard === 'none' && model.guard) return false;
  if (guard && guard !== 'none' && !(model.guard ?? '').toLowerCase().includes(guard)) return false;
  if ($('filter-reversed').checked && !model.reversedTriangles) return false;
  if ($('filter-seasons').checked && !model.seasons) return false;
  if ($('filter-lights').checked && !model.lights) return false;
  return true;
}

const title = (model) => (model.editable ? model.file : `${model.file} #${model.model}`);

function card(model) {
  const box = el('input', {
    type: 'checkbox',
    'aria-label': `select ${title(model)}`,
    checked: selection.has(model.id),
    onchange: (event) => {
      if (event.target.checked) selection.add(model.id);
      else selection.delete(model.id);
      event.target.closest('.card').classList.toggle('selected', event.target.checked);
      showSelection();
    },
  });
  if (model.error) {
    return el(
      'div',
      { class: 'card' },
      el('div', { class: 'name' }, model.file),
      el('div', { class: 'guard' }, model.error),
    );
  }
  // The thumbnail's address changes with the model, so that an edited model is drawn afresh.
  const version = `${model.commands}-${model.vertices}-${model.unsaved}-${encodeURIComponent(model.guard ?? '')}`;
  return el(
    'div',
    { class: `card${selection.has(model.id) ? ' selected' : ''}`, 'data-id': model.id },
    el('img', {
      src: `${modelPath(model.id, 'thumbnail.png')}?v=${version}`,
      alt: title(model),
      loading: 'lazy',
      width: 256,
      height: 192,
      onclick: () => (location.hash = `#/model/${model.id}`),
    }),
    box,
    el('div', { class: 'name' }, title(model)),
    el('div', { class: 'counts' }, `${model.vertices} vertices, ${model.commands} commands`),
    el('div', { class: 'guard' }, model.guard ? `drawn when ${model.guard}` : 'no guarded call'),
    el(
      'div',
      {},
      model.reversedTriangles
        ? el('span', { class: 'badge bad' }, `${model.reversedTriangles} reversed`)
        : null,
      model.seasons ? el('span', { class: 'badge' }, 'seasons') : null,
      model.lights ? el('span', { class: 'badge' }, `${model.lights} lights`) : null,
      model.unsaved ? el('span', { class: 'badge unsaved' }, 'unsaved') : null,
    ),
  );
}

function showSelection() {
  $('selection-count').textContent = selection.size
    ? `${selection.size} model${selection.size === 1 ? '' : 's'} selected.`
    : 'No model selected.';
}

function draw() {
  const visible = models.filter(shown);
  fill($('grid'), visible.map(card));
  $('where').textContent = `${visible.length} of ${models.length} models`;
}

export async function showFolder() {
  try {
    models = await get('/api/models');
  } catch (error) {
    return status(error.message, true);
  }
  draw();
  showSelection();
}

export function setUpFolder() {
  for (const id of filters) $(id).addEventListener('input', draw);
  $('select-shown').addEventListener('click', () => {
    for (const model of models.filter(shown)) selection.add(model.id);
    draw();
    showSelection();
  });
  $('select-none').addEventListener('click', () => {
    selection.clear();
    draw();
    showSelection();
  });
  batchRepairs(
    $('batch-repairs'),
    () => models.filter((model) => selection.has(model.id)),
    showFolder,
  );
}
