// Put behind a chart's page: moves the pointer and turns the wheel as a reader would, and leaves
// what the page then says in the element "seen", one line each.
addEventListener('load', () => {
  const seen = [], map = document.getElementById('map'), tip = document.getElementById('tip');
  const text = (id) => document.getElementById(id).textContent;
  const at = (x, y) => {
    const r = map.getBoundingClientRect();
    return {clientX: r.left + x, clientY: r.top + y, bubbles: true, cancelable: true};
  };
  const hover = (x, y) => {
    map.dispatchEvent(new PointerEvent('pointermove', at(x, y)));
    return tip.style.display === 'block' ? tip.innerText.replace(/\n+/g, ' | ') : 'nothing';
  };
  // The first box, of the first row.
  const first = hits[0], inFirst = [first[0] + 1, first[1] + 4];
  seen.push('whole: ' + text('range'));
  seen.push('first box: ' + hover(...inFirst));
  seen.push('beside: ' + hover(2, 2));
  map.dispatchEvent(new WheelEvent('wheel', {...at(...inFirst), deltaY: -600}));
  seen.push('zoomed: ' + text('range'));
  document.getElementById('all').click();
  seen.push('back: ' + text('range'));
  document.getElementById('movie').click();
  seen.push('movie: ' + text('range'));
  map.dispatchEvent(new MouseEvent('dblclick', at(hits[0][0] + hits[0][2] / 2, hits[0][1] + 4)));
  seen.push('double click: ' + text('range'));
  document.getElementById('evidence').click();
  const mark = hits.find((h) => h[4].b[V] && h[4].n === 1);
  seen.push('evidence: ' + (mark ? hover(mark[0] + 1, mark[1] + 4) : 'nothing'));
  map.dispatchEvent(new PointerEvent('pointerleave'));
  seen.push('left: ' + (tip.style.display === 'none' ? 'nothing' : 'a tip'));
  seen.push('ink: ' + getComputedStyle(document.body).color);
  const list = document.createElement('pre');
  list.id = 'seen';
  list.textContent = seen.join('\n');
  document.body.append(list);
});
