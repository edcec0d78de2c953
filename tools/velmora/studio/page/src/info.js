// The model's info: its guard and what the editor can rewrite, seasons, lights, size tests,
// reversed triangles and sections, as `velmora info --json` gives them.
import { el, fill } from './dom.js';

const table = (head, rows) =>
  el(
    'table',
    {},
    el(
      'tr',
      {},
      head.map((h) => el('th', {}, h)),
    ),
    rows.map((row) =>
      el(
        'tr',
        {},
        row.map((cell) => el('td', {}, cell)),
      ),
    ),
  );

const section = (title, ...content) => [el('h2', {}, title), ...content];

function guardOf(guard) {
  if (!guard.guardedCall)
    return section('Guard', el('p', {}, 'No guarded call: the model is drawn as it stands.'));
  const editor = guard.editor;
  return section(
    'Guard',
    el(
      'p',
      {},
      'Drawn when ',
      el('code', { id: 'guard-formula' }, guard.formula),
      ` (${guard.callOpcode} at command ${guard.guardedCall})`,
    ),
    guard.rotation ? el('p', {}, `Turned to the ${guard.rotation}.`) : null,
    guard.tests.length
      ? table(
          ['At', 'Test', ''],
          guard.tests.map((t) => [
            t.position,
            t.text,
            [t.reachable ? '' : 'unreachable', t.editable ? '' : 'not editable']
              .filter(Boolean)
              .join(', '),
          ]),
        )
      : null,
    el(
      'p',
      { class: 'note' },
      editor.canRewrite
        ? `The condition editor can rewrite this guard; it reads it as ${editor.reads} (combined by ${editor.combine}).`
        : `The condition editor can't rewrite this guard: ${editor.limits.join('; ')}.`,
    ),
    guard.otherCommands.length
      ? el(
          'p',
          { class: 'note' },
          `Rewriting it would remove commands ${guard.otherCommands.map((c) => `${c.position} (${c.opcode})`).join(', ')}.`,
        )
      : null,
  );
}

function seasonsOf(runs) {
  if (!runs.length) return [];
  return section(
    'Seasonal textures',
    runs.map((run) =>
      table(
        ['At', 'Texture', 'Days'],
        run.variants.map((v) => [
          v.position,
          v.name,
          v.days ? `${v.days[0]} to ${v.days[1]}` : 'otherwise',
        ]),
      ),
    ),
  );
}

// `title` names the model for people; `onCommand(position)` shows a command in the listing.
export function showInfo(container, info, title, onCommand) {
  const go = (position) =>
    el('a', { href: '#', onclick: (e) => (e.preventDefault(), onCommand(position)) }, position);
  fill(container, [
    el('p', {}, el('strong', {}, title)),
    el(
      'p',
      {},
      `${info.counts.vertices} vertices, ${info.counts.materials} materials, ${info.counts.textures} textures, ${info.counts.commands} commands.`,
      info.isft ? el('br') : null,
      info.isft ? `ISFT: ${info.isft}` : null,
    ),
    ...guardOf(info.guard),
    ...section(
      'Reversed triangles',
      info.reversedTriangles.length
        ? el(
            'p',
            { class: 'note' },
            `${info.reversedTriangles.length} triangles face against their normals (red in the view): commands `,
            info.reversedTriangles.slice(0, 50).flatMap((p, i) => [i ? ', ' : '', go(p)]),
            info.reversedTriangles.length > 50 ? ', …' : '',
            '. The repair "Turn reversed triangles round" fixes them.',
          )
        : el('p', { class: 'note' }, 'None: every triangle faces the way its normals do.'),
    ),
    ...seasonsOf(info.seasons),
    ...(info.lights.length
      ? section(
          'Lights',
          table(
            ['At', 'Where', 'Colour', 'Tests'],
            info.lights.map((l) => [
              go(l.position),
              l.at.join(', '),
              l.colour,
              l.tests.join(' and '),
            ]),
          ),
        )
      : []),
    ...(info.sizeTests.length
      ? section(
          'Size tests',
          table(
            ['At', 'Test', 'Size', 'Pixels', 'Fails to'],
            info.sizeTests.map((t) => [go(t.position), t.opcode, t.size, t.pixels, t.failsTo]),
          ),
        )
      : []),
    ...section(
      'Textures',
      table(
        ['', 'Name', 'Type', 'Size'],
        info.textures.map((t) => [t.index, t.name, t.type, t.size]),
      ),
    ),
    ...section(
      'Sections',
      table(
        ['Tag', 'Bytes'],
        info.sections.map((s) => [s.tag, s.size]),
      ),
    ),
    el('p', { class: 'note' }, `Kill shadow: ${info.killShadow ? 'yes' : 'no'}.`),
  ]);
}
