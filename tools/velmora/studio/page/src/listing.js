// The command listing, drawn a screenful at a time so that a stream of any length scrolls
// smoothly: only the rows in sight (and a few around them) exist.
import { el } from './dom.js';

const rowHeight = 20;
const spare = 10;

export class Listing {
  constructor(container) {
    this.container = container;
    this.lines = [];
    this.reversed = new Set();
    this.spacer = el('div');
    this.rows = el('div');
    container.replaceChildren(this.spacer, this.rows);
    container.addEventListener('scroll', () => this.draw());
    new ResizeObserver(() => this.draw()).observe(container);
  }

  // `lines` are the listing's, a command each: "4  BGL_CALL_32 8 -> 6".
  show(lines, reversed) {
    this.lines = lines;
    this.reversed = new Set(reversed);
    this.spacer.style.height = `${lines.length * rowHeight}px`;
    this.drawn = null;
    this.draw();
  }

  // A row: the position apart, and each jump's destination a link to it.
  row(index) {
    const position = index + 1;
    const text = this.lines[index].slice(String(position).length + 2);
    const parts = text
      .split(/-> (\d+)/)
      .map((part, i) =>
        i % 2 ? el('a', { onclick: () => this.goTo(Number(part)) }, `-> ${part}`) : part,
      );
    return el(
      'div',
      {
        class: `row${this.reversed.has(position) ? ' reversed' : ''}`,
        style: `top:${index * rowHeight}px`,
        'data-position': position,
      },
      el('span', { class: 'at' }, position),
      parts,
    );
  }

  draw() {
    const top = this.container.scrollTop;
    const height = this.container.clientHeight || 600;
    const first = Math.max(0, Math.floor(top / rowHeight) - spare);
    const last = Math.min(this.lines.length, Math.ceil((top + height) / rowHeight) + spare);
    if (this.drawn && this.drawn[0] === first && this.drawn[1] === last) return;
    this.drawn = [first, last];
    const rows = [];
    for (let index = first; index < last; index += 1) rows.push(this.row(index));
    this.rows.replaceChildren(...rows);
  }

  // Scrolls the command at `position` (from 1) into sight.
  goTo(position) {
    this.container.scrollTop = Math.max(0, (position - 3) * rowHeight);
    this.draw();
  }
}
