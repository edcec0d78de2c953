// The scenario the 3D view shows the model under: day of year or season, day or night,
// complexity and each variable of the model's guard, as the glTF route's parameters.
import { el, fill } from './dom.js';

const seasons = ['spring', 'summer', 'fall', 'winter', 'heavywinter'];
const complexity = 798;

export class ScenarioControls {
  // `known` is the studio's scenario of the model: its variables with the values that show it.
  constructor(container, known, changed) {
    this.season = el(
      'select',
      {
        id: 'season',
        onchange: () => {
          this.day.disabled = Boolean(this.season.value);
          changed();
        },
      },
      el('option', { value: '' }, 'day of year'),
      seasons.map((s) => el('option', { value: s }, s)),
    );
    this.day = el('input', {
      type: 'number',
      id: 'day',
      min: 1,
      max: 366,
      value: 172,
      onchange: changed,
    });
    this.night = el('input', { type: 'checkbox', id: 'night', onchange: changed });
    this.bothSides = el('input', { type: 'checkbox', id: 'both-sides' });
    this.reversed = el('input', { type: 'checkbox', id: 'show-reversed', checked: true });
    this.variables = new Map();
    const inputs = known.variables.map(({ variable, value }) => {
      const input =
        variable === complexity
          ? el(
              'select',
              { onchange: changed },
              [0, 1, 2, 3, 4, 5].map((n) => el('option', { value: n, selected: n === value }, n)),
            )
          : el('input', { type: 'number', value, onchange: changed });
      input.dataset.variable = variable;
      this.variables.set(variable, input);
      return el(
        'label',
        {},
        variable === complexity ? 'complexity' : `variable ${variable}`,
        input,
      );
    });
    const drawn = Object.entries(known.drawnWith);
    fill(container, [
      el('label', {}, 'Season', this.season),
      el('label', {}, 'Day', this.day),
      el('label', {}, this.night, 'night'),
      inputs,
      el('label', {}, this.bothSides, 'both sides'),
      el('label', {}, this.reversed, 'reversed in red'),
      drawn.length
        ? el(
            'span',
            { class: 'note' },
            `shown with ${drawn.map(([v, n]) => `${v}=${n}`).join(', ')}: its guard hides it otherwise`,
          )
        : null,
    ]);
  }

  // The query of the glTF and reversed-triangle routes.
  query() {
    const query = new URLSearchParams();
    if (this.season.value) query.set('season', this.season.value);
    else if (this.day.value) query.set('day', this.day.value);
    if (this.night.checked) query.set('night', '1');
    for (const [variable, input] of this.variables)
      query.append('set', `${variable}=${input.value}`);
    return query.toString();
  }
}
