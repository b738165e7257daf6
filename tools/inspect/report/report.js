/* @file
   Builds the page of `inspect report` from its data. Text of a capture is inserted as text, never as markup.

   Copyright (c) 2026, Corvane contributors
   SPDX-License-Identifier: BSD-2-Clause-Patent */
'use strict';
(() => {
  const data = JSON.parse(document.getElementById('data').textContent);
  const byId = (id) => document.getElementById(id);

  // Makes an element with attributes and children. Children are elements or text.
  function make(tag, options, ...children) {
    const element = document.createElement(tag);
    for (const [key, value] of Object.entries(options || {})) {
      if (key === 'class') element.className = value;
      else element.setAttribute(key, value);
    }
    element.append(...children.filter((child) => child !== null && child !== undefined));
    return element;
  }

  function showHead() {
    const head = data.older === null ? data.input : `${data.input}, compared with ${data.older}`;
    const notes = data.findings.filter((finding) => finding.note).length;
    byId('inputs').append(head, make('br'),
      data.firmware === null ? '' : `firmware ${data.firmware} · `,
      `${rows.length} attributes · findings: ${data.findings.length - notes} · notes: ${notes}`);
    for (const section of document.querySelectorAll('main > section:not([hidden])')) {
      byId('sections').append(make('a', {href: '#' + section.id}, section.querySelector('h2').textContent));
    }
  }

  function showTables() {
    const bars = make('div', {class: 'bars'});
    for (const table of data.tables) {
      const percent = 100 * table.used / table.capacity;
      const isFull = table.lost > 0 || table.maybeCut;
      const level = isFull ? 'fill full' : percent > 85 ? 'fill high' : 'fill';
      let note = `${table.used} of ${table.capacity} bytes, ${table.entries} entries`;
      if (table.lost > 0) note += `; ${table.lost} lost` + (table.firstLost === null ? '' : ` from handle ${table.firstLost}`);
      else if (table.maybeCut) note += '; perhaps cut';
      if (!table.crcOk) note += '; wrong checksum';
      bars.append(make('div', {class: 'bar'},
        make('span', {}, table.name),
        make('div', {class: 'track', role: 'img', 'aria-label': `${table.name}: ${percent.toFixed(1)} percent full`},
          make('div', {class: level, style: `width: ${Math.min(percent, 100)}%`})),
        make('span', {class: 'note' + (isFull || !table.crcOk ? ' bad' : ' faint')}, `${percent.toFixed(1)} % · ${note}`)));
    }
    byId('tables').append(bars);
  }

  function showFindings() {
    const list = make('ul', {class: 'list'});
    for (const finding of data.findings) {
      list.append(make('li', {}, make('span', {class: finding.note ? 'tag' : 'tag bad'}, finding.code), finding.text,
        finding.advice ? make('p', {class: 'faint'}, finding.advice) : null));
    }
    byId('findings').append(data.findings.length > 0 ? list : make('p', {class: 'good'}, 'None.'));
    if (data.textsMissing) {
      byId('findings').append(make('p', {class: 'faint'}, 'Some texts are not shown with their attributes: ' + data.textsMissing));
    }
  }

  function showDifferences() {
    if (data.differences === null) return;
    const section = byId('differences');
    section.hidden = false;
    for (const breaking of [true, false]) {
      const rows = data.differences.filter((one) => one.breaking === breaking);
      const title = breaking ? 'Breaking' : 'Other';
      section.append(make('h3', {class: breaking && rows.length > 0 ? 'bad' : ''}, `${title}: ${rows.length}`));
      if (rows.length === 0) continue;
      const body = make('tbody');
      for (const one of rows) {
        const place = data.attributes.findIndex((attribute) => attribute.name === one.attribute);
        const name = place < 0 ? one.attribute : make('a', {href: '#a' + place}, one.attribute);
        body.append(make('tr', {}, make('td', {}, name), make('td', {}, make('span', {class: 'tag'}, one.what)),
          make('td', {}, `${one.old === null ? '–' : one.old} → ${one.new === null ? '–' : one.new}`)));
      }
      section.append(make('table', {class: 'changes'},
        make('thead', {}, make('tr', {}, ...['Attribute', 'What', 'Change'].map((text) => make('th', {}, text)))), body));
    }
  }

  const conditionText = (edge) => `${edge.from} ${edge.not ? 'is not' : '='} ${edge.value}`;
  const edgeText = (edge) =>
    `${edge.to}${edge.forced === null ? '' : ' = ' + edge.forced} is forced if ${conditionText(edge)}`;

  function describe(attribute) {
    const list = make('dl');
    const add = (term, text) => {
      if (text !== null && text !== undefined && text !== '') list.append(make('dt', {}, term), make('dd', {}, text));
    };
    add('Help', attribute.help);
    add('Name', make('span', {class: 'name'}, attribute.fullName));
    add('Type', attribute.type + (attribute.readOnly ? ', read-only' : ''));
    add('Possible', attribute.domain);
    add('Default', attribute.default);
    add('Expression', attribute.expression);
    add('Token', attribute.token === null || attribute.token === 0 ? '' : String(attribute.token));
    add('Handle', String(attribute.handle));
    for (const edge of data.edges) {
      if (edge.to === attribute.name) add('Forced', edgeText(edge));
      if (edge.from === attribute.name) add('Forces', edgeText(edge));
    }
    return list;
  }

  const rows = [];  // one for each listed attribute: {attribute, element, text}

  function showAttribute(attribute, place, into) {
    const away = attribute.atDefault === false;
    const summary = make('summary', {},
      make('span', {}, attribute.display === null ? attribute.name : attribute.display,
        attribute.readOnly ? make('span', {class: 'faint'}, ' (read-only)') : null),
      make('span', {class: 'name faint'}, attribute.name),
      make('span', {class: away ? 'away' : ''}, attribute.current));
    const element = make('details', {class: 'attribute', id: 'a' + place}, summary);
    const open = () => {
      if (element.children.length === 1) element.append(describe(attribute));
    };
    element.addEventListener('toggle', open);
    into.append(element);
    const text = [attribute.name, attribute.display, attribute.help, attribute.current, attribute.domain, attribute.token];
    rows.push({attribute, element, away, open, text: text.join('\n').toLowerCase()});
  }

  function showAttributes() {
    for (const group of data.groups) {
      const box = make('div', {class: 'group'}, make('h3', {}, group.title));
      for (const place of group.members) showAttribute(data.attributes[place], place, box);
      byId('attributes').append(box);
    }
    for (const id of ['search', 'changed', 'writable']) byId(id).addEventListener('input', filter);
    filter();
    // On paper every attribute is open. Afterwards, only those that the reader had opened are.
    let openedToPrint = [];
    window.addEventListener('beforeprint', () => {
      openedToPrint = rows.filter((row) => !row.element.open);
      for (const row of openedToPrint) {
        row.open();
        row.element.open = true;
      }
    });
    window.addEventListener('afterprint', () => {
      for (const row of openedToPrint) row.element.open = false;
    });
    window.addEventListener('hashchange', openTarget);
    openTarget();
  }

  function openTarget() {
    const target = /^#a\d+$/.test(location.hash) ? byId(location.hash.slice(1)) : null;
    if (target === null) return;
    target.hidden = false;
    target.open = true;
    target.scrollIntoView({block: 'center'});
  }

  function filter() {
    const words = byId('search').value.toLowerCase().split(/\s+/).filter((word) => word !== '');
    let shown = 0;
    for (const row of rows) {
      const fits = words.every((word) => row.text.includes(word)) && (!byId('changed').checked || row.away) &&
        (!byId('writable').checked || !row.attribute.readOnly);
      row.element.hidden = !fits;
      shown += fits ? 1 : 0;
    }
    for (const group of document.querySelectorAll('.group')) {
      group.hidden = group.querySelector('details:not([hidden])') === null;
    }
    byId('shown').textContent = `${shown} of ${rows.length}`;
  }

  // Those that close a cycle when the graph is walked from its beginnings.
  function findBackEdges(edges) {
    const leaving = new Map(), state = new Map(), back = new Set();
    for (const edge of edges) leaving.set(edge.from, [...(leaving.get(edge.from) || []), edge]);
    const visit = (name) => {
      if (state.has(name)) return;
      state.set(name, 'open');
      for (const edge of leaving.get(name) || []) {
        if (state.get(edge.to) === 'open') back.add(edge);
        else visit(edge.to);
      }
      state.set(name, 'done');
    };
    const forced = new Set(edges.map((edge) => edge.to));
    for (const edge of edges) if (!forced.has(edge.from)) visit(edge.from);
    for (const edge of edges) visit(edge.from);
    return back;
  }

  // An attribute stands to the right of all that force it, except along a cycle.
  function findColumns(edges) {
    const column = new Map(), back = findBackEdges(edges);
    for (const edge of edges) column.set(edge.from, 0).set(edge.to, 0);
    for (let moved = true; moved;) {
      moved = false;
      for (const edge of edges) {
        if (!back.has(edge) && column.get(edge.to) <= column.get(edge.from)) {
          column.set(edge.to, column.get(edge.from) + 1);
          moved = true;
        }
      }
    }
    return column;
  }

  // Names that edges connect, as lists.
  function findComponents(edges) {
    const group = new Map();
    const rootOf = (name) => {
      while (group.get(name) !== name) name = group.get(name);
      return name;
    };
    for (const edge of edges) {
      for (const name of [edge.from, edge.to]) if (!group.has(name)) group.set(name, name);
      group.set(rootOf(edge.from), rootOf(edge.to));
    }
    const components = new Map();
    for (const name of group.keys()) {
      const root = rootOf(name);
      if (!components.has(root)) components.set(root, []);
      components.get(root).push(name);
    }
    return [...components.values()].sort((a, b) => b.length - a.length);
  }

  const svg = (tag, attributes, ...children) => {
    const element = document.createElementNS('http://www.w3.org/2000/svg', tag);
    for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
    element.append(...children);
    return element;
  };

  function drawGraph(box) {
    const kWidth = 150, kHeight = 26, kRow = 34, kGap = box.clientWidth < 560 ? 40 : 90;
    const column = findColumns(data.edges);
    const place = new Map();
    let top = 4;
    for (const names of findComponents(data.edges)) {
      const next = [];
      const center = (name) => {  // of those that force it, so that lines cross little
        const from = data.edges.filter((edge) => edge.to === name && place.has(edge.from)).map((edge) => place.get(edge.from).y);
        return from.length === 0 ? 0 : from.reduce((sum, y) => sum + y, 0) / from.length;
      };
      const last = Math.max(...names.map((name) => column.get(name)));
      for (let number = 0; number <= last; ++number) {
        const here = names.filter((name) => column.get(name) === number);
        here.sort((a, b) => center(a) - center(b));
        here.forEach((name, i) => place.set(name, {x: 4 + number * (kWidth + kGap), y: top + i * kRow}));
        next.push(here.length);
      }
      top += Math.max(...next) * kRow + 14;
    }
    const width = 8 + Math.max(...[...place.values()].map((at) => at.x)) + kWidth;
    const drawing = svg('svg', {width, height: top, viewBox: `0 0 ${width} ${top}`, role: 'img', 'aria-label': 'Dependency graph'});
    const lines = data.edges.map((edge) => {
      const from = place.get(edge.from), to = place.get(edge.to);
      const x1 = from.x + kWidth, y1 = from.y + kHeight / 2, x2 = to.x, y2 = to.y + kHeight / 2, bend = kGap / 2;
      const middle = kWidth / 2, low = kHeight / 2 + 14;  // one that goes back passes below
      const curve = x1 < x2 ? `M${x1},${y1} C${x1 + bend},${y1} ${x2 - bend},${y2} ${x2 - 3},${y2}` :
        `M${x1 - middle},${y1 + kHeight / 2} C${x1 - middle},${y1 + low} ${x2 + middle},${y2 + low} ${x2 + middle},${y2 + kHeight / 2 + 3}`;
      const line = svg('path', {class: edge.not ? 'not' : '', 'marker-end': 'url(#tip)', d: curve});
      line.append(svg('title', {}, edgeText(edge)));
      return line;
    });
    drawing.append(svg('marker', {id: 'tip', viewBox: '0 0 6 6', refX: 5, refY: 3, markerWidth: 6, markerHeight: 6, orient: 'auto'},
      svg('path', {d: 'M0,0 L6,3 L0,6'})), ...lines);
    for (const [name, at] of place) {
      const label = name.length > 20 ? name.slice(0, 19) + '…' : name;
      const node = svg('g', {transform: `translate(${at.x},${at.y})`, tabindex: 0},
        svg('rect', {width: kWidth, height: kHeight, rx: 5}), svg('text', {x: 8, y: 17}, label), svg('title', {}, name));
      const light = (on) => {
        node.setAttribute('class', on ? 'lit' : '');
        data.edges.forEach((edge, i) => {
          const lit = on && (edge.from === name || edge.to === name);
          lines[i].setAttribute('class', (edge.not ? 'not ' : '') + (lit ? 'lit' : ''));
        });
      };
      node.addEventListener('pointerenter', () => light(true));
      node.addEventListener('pointerleave', () => light(false));
      node.addEventListener('focus', () => light(true));
      node.addEventListener('blur', () => light(false));
      drawing.append(node);
    }
    box.replaceChildren(drawing);
  }

  function showDependencies() {
    const section = byId('dependencies');
    if (data.edges.length === 0) {
      section.append(make('p', {class: 'faint'}, 'No attribute forces another.'));
      return;
    }
    section.append(make('p', {class: 'faint'},
      'An arrow leads from an attribute to an attribute that it may force. A broken line: while it does not have the value.'));
    const box = make('div', {class: 'graph'});
    section.append(box);
    drawGraph(box);
    const list = make('ul', {class: 'list'});
    for (const edge of data.edges) list.append(make('li', {}, edgeText(edge)));
    section.append(list);
  }

  showTables();
  showFindings();
  showDifferences();
  showAttributes();
  showDependencies();
  showHead();
})();
