// The search of the site: over the text of all pages, in the browser. `scripts/docs/search-index` writes the index, as
// SEARCH_INDEX = [[title, address, text], ...], one entry for each section and each function.
(() => {
  const kShown = 40;
  const kContext = 60;

  // The words of a question must all occur. Titles count most, and short ones more than long ones.
  function find(question) {
    const words = question.toLowerCase().split(/\s+/).filter((word) => word);
    if (!words.length) return [];
    const found = [];
    for (const [title, address, text] of SEARCH_INDEX) {
      const lowTitle = title.toLowerCase();
      const all = lowTitle + ' ' + text.toLowerCase();
      if (!words.every((word) => all.includes(word))) continue;
      const inTitle = words.filter((word) => lowTitle.includes(word)).length;
      found.push({ title, address, text, score: inTitle * 1000 - title.length - (lowTitle.startsWith(words[0]) ? 0 : 100) });
    }
    return found.sort((a, b) => b.score - a.score).slice(0, kShown).map((entry) => ({ ...entry, word: words[0] }));
  }

  function row({ title, address, text, word }) {
    const link = document.createElement('a');
    link.href = address;
    link.appendChild(document.createElement('b')).textContent = title;
    const at = Math.max(0, text.toLowerCase().indexOf(word) - kContext);
    link.appendChild(document.createElement('span')).textContent = text.slice(at, at + 2 * kContext);
    return link;
  }

  document.addEventListener('DOMContentLoaded', () => {
    const place = document.getElementById('titlearea') || document.body;
    const input = place.appendChild(document.createElement('input'));
    input.id = 'site-search';
    input.type = 'search';
    input.placeholder = 'Search (press /)';
    input.setAttribute('aria-label', 'Search');
    const results = place.appendChild(document.createElement('div'));
    results.id = 'site-results';
    input.addEventListener('input', () => results.replaceChildren(...find(input.value).map(row)));
    input.addEventListener('keydown', (event) => {
      if (event.key === 'Enter' && results.firstChild) location.href = results.firstChild.href;
      if (event.key === 'Escape') results.replaceChildren();
    });
    document.addEventListener('keydown', (event) => {
      if (event.key !== '/' || event.target === input) return;
      event.preventDefault();
      input.focus();
    });
    document.addEventListener('click', (event) => {
      if (event.target !== input) results.replaceChildren();
    });
  });
})();
