// A small helper for building elements: el('div', {class: 'x', onclick: f}, child, 'text').
export function el(tag, attributes = {}, ...children) {
  const node = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value === undefined || value === null || value === false) continue;
    if (name.startsWith('on')) node.addEventListener(name.slice(2), value);
    else if (name === 'class') node.className = value;
    else if (value === true) node.setAttribute(name, '');
    else node.setAttribute(name, value);
  }
  return fill(node, children, true);
}

// Puts `children` (nested lists of nodes and texts; null, undefined and false left out) into
// `node`, in place of what it held unless `keep`.
export function fill(node, children, keep = false) {
  if (!keep) node.replaceChildren();
  for (const child of [children].flat(Infinity)) {
    if (child === undefined || child === null || child === false) continue;
    node.append(child instanceof Node ? child : String(child));
  }
  return node;
}

export const $ = (id) => document.getElementById(id);

let statusTimer = 0;
// Says something in the header; errors stay until the next message.
export function status(text, isError = false) {
  const node = $('status');
  node.textContent = text;
  node.classList.toggle('error', isError);
  clearTimeout(statusTimer);
  if (!isError && text) statusTimer = setTimeout(() => (node.textContent = ''), 4000);
}
