// SPDX-License-Identifier: Apache-2.0
//
// Elements without markup: whatever a text contains, it is shown as text.

/// make("p.reason", {dir: "auto"}, "text"): an element with classes, attributes, which may be left
/// out, and children. "on..." is a listener. Null is no child.
export function make(name, ...children) {
  const [tag, ...classes] = name.split(".");
  const made = document.createElement(tag);
  made.classList.add(...classes);
  if (children[0]?.constructor === Object) {
    for (const [key, value] of Object.entries(children.shift())) {
      if (key.startsWith("on"))
        made.addEventListener(key.slice(2), value);
      else
        setAttribute(made, key, value);
    }
  }
  made.append(...children.flat(2).filter(child => child !== null));
  return made;
}

// What is the same already is left alone: nothing is drawn again, and no screen reader speaks.

export function setText(target, text) {
  if (target.textContent !== text)
    target.textContent = text;
}

/// Null, undefined and false remove it; true is an attribute without a value.
export function setAttribute(target, name, value) {
  if (value === null || value === undefined || value === false)
    target.removeAttribute(name);
  else if (target.getAttribute(name) !== String(value))
    target.setAttribute(name, value === true ? "" : String(value));
}
