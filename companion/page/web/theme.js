// The switch between light and dark; "auto" is the system's choice.

const key = 'vantrel-theme';

export function wireThemes(root) {
  const show = (theme) => {
    document.documentElement.dataset.theme = theme;
    root.querySelector(`[value="${theme}"]`).checked = true;
  };
  const stored = localStorage.getItem(key);
  show(['light', 'dark'].includes(stored) ? stored : 'auto');
  root.addEventListener('change', (event) => {
    localStorage.setItem(key, event.target.value);
    show(event.target.value);
  });
}
