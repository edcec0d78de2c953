// The command listing, drawn a screenful at a time so that a stream of any length scrolls
// smoothly: only the rows in sight (and a few around them) exist.
import { el } from './dom.js';

const rowHeight = 20;
const spare = 10;

function parameter(value) {
  if (value !== null && typeof value === 'object') return value.text ?? JSON.stringify(value);
  return String(value);
}

export class Listing {
  constructor(container) {
    this.container = container;
    this.commands = [];
    this.reversed = new Set();
    this.spacer = el('div');
    this.rows = el('div');
    container.replaceChildren(this.spacer, this.rows);
    container.addEventListener('scroll', () => this.draw());
    new ResizeObserver(() => this.draw()).observe(container);
  }

  show(commands, reversed) {
    this.commands = commands;
    this.reversed = new Set(reversed);
    this.spacer.style.height = `${commands.length * rowHeight}px`;
    this.drawn = null;
    this.draw();
  }

  row(command) {
    const jumps = command.jumps.map((jump) =>
      el('a', { onclick: () => this.goTo(jump.target) }, ` → ${jump.target}`),
    );
    return el(
      'div',
      {
        class: `row${this.reversed.has(command.position) ? ' reversed' : ''}`,
        style: `top:${(command.position - 1) * rowHeight}px`,
        'data-position': command.position,
      },
      el('span', { class: 'at' }, command.position),
      `${command.name} ${command.params.map(parameter).join(', ')}`,
      jumps,
    );
  }

  draw() {
    const top = this.container.scrollTop;
    const height = this.container.clientHeight || 600;
    const first = Math.max(0, Math.floor(top / rowHeight) - spare);
    const last = Math.min(this.commands.length, Math.ceil((top + height) / rowHeight) + spare);
    if (this.drawn && this.drawn[0] === first && this.drawn[1] === last) return;
    this.drawn = [first, last];
    this.rows.replaceChildren(...this.commands.slice(first, last).map((c) => this.row(c)));
  }

  // Scrolls the command at `position` (from 1) into sight.
  goTo(position) {
    this.container.scrollTop = Math.max(0, (position - 3) * rowHeight);
    this.draw();
  }
}
