// Makes an element: attributes by name, children as elements or texts.
export function element(name, attributes = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    made.setAttribute(key, value);
  }
  made.append(...children);
  return made;
}

export function clockText(milliseconds) {
  const time = new Date(milliseconds);
  const digits = (number, width = 2) => String(number).padStart(width, '0');
  return `${digits(time.getHours())}:${digits(time.getMinutes())}:${digits(time.getSeconds())}.${digits(time.getMilliseconds(), 3)}`;
}

// Sets a text only when it differs: screen readers read out each text that is set.
export function setText(target, text) {
  if (target.textContent !== text) {
    target.textContent = text;
  }
}
