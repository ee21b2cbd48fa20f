// Draws the report from its data (the JSON element "report-data"): a time
// axis shared by the whole page, then per port and application a lane per
// attribute with its registered stretches and marks, and the tables of the
// run's end. Tracks with many lanes start collapsed and are drawn when
// opened, so that a long run with many ports opens quickly.
(function () {
  'use strict';

  const data = JSON.parse(document.getElementById('report-data').textContent);
  const LABEL_WIDTH = 300;
  const LANE_HEIGHT = 16;
  const HEAD_HEIGHT = 16;
  const COLLAPSE_BEYOND = 12;
  const TABLE_ROWS_OPEN = 200;
  const width = Math.max(600, Math.min(2000, window.innerWidth - LABEL_WIDTH - 60));
  const until = data.until > 0 ? data.until : 1;

  const MARK_NAMES = {
    join: 'join', leave: 'leave', forget: 'gone without a leave', declare: 'declare', withdraw: 'withdraw',
    leaveAllSent: 'LeaveAll sent', leaveAllReceived: 'LeaveAll received', linkDown: 'link cut',
    linkUp: 'link restored', role: 'role change', port: 'port change', reserved: 'stream reserved',
    released: 'stream released', talkerFailed: 'Talker Failed declared', listener: 'Listener declaration'
  };
  const STATE_NAMES = { IN: 'registered (IN)', LV: 'leaving (LV)', TF: 'registered, failed' };
  const PORT_WIDE = { linkDown: true, linkUp: true, role: true, port: true };

  function x(t) { return LABEL_WIDTH + (t / until) * width; }

  function escaped(text) {
    return String(text).replace(/&/g, '&amp;').replace(/</g, '&lt;').replace(/>/g, '&gt;').replace(/"/g, '&quot;');
  }

  function seconds(t) { return t.toFixed(3); }

  // The text timeline's line a mark stands for.
  function lineText(mark) {
    const index = mark[2];
    let text;
    if (index === null || index === undefined) {
      text = seconds(mark[0]) + '  ' + (MARK_NAMES[mark[1]] || mark[1]);
    } else {
      const line = data.lines[index];
      text = [seconds(line[0]), line[1], line[2], line[3], line[4]].filter(function (part) { return part !== ''; })
        .join('  ');
    }
    if (mark.length > 3) text += '\n(and ' + (mark[3] - 1) + ' more ' + MARK_NAMES[mark[1]] + ' within a pixel)';
    return text;
  }

  function shape(kind, cx, cy, height) {
    if (PORT_WIDE[kind]) return '<line x1="' + cx + '" x2="' + cx + '" y1="0" y2="' + height + '"/>';
    const r = 4.5;
    switch (kind) {
      case 'join': return '<path d="M' + (cx - r) + ' ' + (cy + r) + 'L' + cx + ' ' + (cy - r) + 'L' + (cx + r) + ' ' + (cy + r) + 'Z"/>';
      case 'leave': return '<path d="M' + (cx - r) + ' ' + (cy - r) + 'L' + cx + ' ' + (cy + r) + 'L' + (cx + r) + ' ' + (cy - r) + 'Z"/>';
      case 'forget': return '<path d="M' + (cx - r) + ' ' + (cy - r) + 'L' + (cx + r) + ' ' + (cy + r) + 'M' + (cx - r) + ' ' + (cy + r) + 'L' + (cx + r) + ' ' + (cy - r) + '"/>';
      case 'leaveAllSent': return '<path d="M' + (cx - 1.5) + ' ' + (cy - 6) + 'h3v7h-3Z"/>';
      case 'leaveAllReceived': return '<path d="M' + (cx - 1.5) + ' ' + (cy - 1) + 'h3v7h-3Z"/>';
      case 'talkerFailed': return '<path d="M' + (cx - r) + ' ' + (cy - r) + 'h' + 2 * r + 'v' + 2 * r + 'h' + -2 * r + 'Z"/>';
      case 'reserved': case 'released': case 'listener':
        return '<path d="M' + (cx - r) + ' ' + cy + 'a' + r + ' ' + r + ' 0 1 0 ' + 2 * r + ' 0a' + r + ' ' + r + ' 0 1 0 ' + -2 * r + ' 0Z"/>';
      default: return '<path d="M' + cx + ' ' + (cy - r) + 'L' + (cx + r) + ' ' + cy + 'L' + cx + ' ' + (cy + r) + 'L' + (cx - r) + ' ' + cy + 'Z"/>';
    }
  }

  function markSvg(mark, cy, height) {
    const cx = Math.round(x(mark[0]) * 10) / 10;
    return '<g class="mark mark-' + mark[1] + '" data-kind="' + mark[1] + '" data-t="' + mark[0] + '" data-tip="' +
      escaped(lineText(mark)) + '">' + shape(mark[1], cx, cy, height) + '</g>';
  }

  function segmentSvg(segment, y) {
    const from = x(segment[0]);
    const to = x(segment[1] === null ? until : segment[1]);
    return '<rect class="seg seg-' + segment[2] + '" x="' + from.toFixed(1) + '" y="' + (y + 3) + '" width="' +
      Math.max(1, to - from).toFixed(1) + '" height="' + (LANE_HEIGHT - 6) + '" data-tip="' +
      escaped(STATE_NAMES[segment[2]] + ' ' + seconds(segment[0]) + ' - ' +
        (segment[1] === null ? 'end' : seconds(segment[1]))) + '"/>';
  }

  // A port's application: the LeaveAll row, then a row per lane; the port's
  // own marks (links, roles) cross every row.
  function trackSvg(port, track) {
    const height = HEAD_HEIGHT + track.lanes.length * LANE_HEIGHT + 2;
    const parts = ['<svg class="lanes" width="' + (LABEL_WIDTH + width + 10) + '" height="' + height + '">'];
    parts.push('<text class="head-label" x="4" y="12">LeaveAll</text>');
    track.lanes.forEach(function (lane, i) {
      const y = HEAD_HEIGHT + i * LANE_HEIGHT;
      parts.push('<g class="lane" data-kind="' + lane.kind + '" data-label="' + escaped(lane.label) + '">');
      parts.push('<rect class="lane-row" x="' + LABEL_WIDTH + '" y="' + y + '" width="' + width + '" height="' +
        (LANE_HEIGHT - 1) + '"/>');
      parts.push('<text class="lane-label" x="4" y="' + (y + 12) + '">' + escaped(lane.label) + '</text>');
      lane.segments.forEach(function (segment) { parts.push(segmentSvg(segment, y)); });
      lane.marks.forEach(function (mark) { parts.push(markSvg(mark, y + LANE_HEIGHT / 2, height)); });
      parts.push('</g>');
    });
    track.marks.forEach(function (mark) { parts.push(markSvg(mark, HEAD_HEIGHT / 2, height)); });
    port.marks.forEach(function (mark) { parts.push(markSvg(mark, HEAD_HEIGHT / 2, height)); });
    parts.push('</svg>');
    return parts.join('');
  }

  function niceStep(span) {
    const rough = span / 10;
    const power = Math.pow(10, Math.floor(Math.log10(rough)));
    const steps = [1, 2, 5, 10];
    for (let i = 0; i < steps.length; i++) if (steps[i] * power >= rough) return steps[i] * power;
    return 10 * power;
  }

  function drawAxis() {
    const step = niceStep(until);
    const parts = ['<svg width="' + (LABEL_WIDTH + width + 10) + '" height="22">',
      '<text class="head-label" x="4" y="15">seconds</text>'];
    for (let t = 0; t <= until + 1e-9; t += step) {
      const tx = x(t).toFixed(1);
      parts.push('<g class="tick"><line x1="' + tx + '" x2="' + tx + '" y1="16" y2="22"/><text x="' + tx +
        '" y="12" text-anchor="middle">' + Number(t.toFixed(6)) + '</text></g>');
    }
    parts.push('</svg>');
    document.getElementById('axis').innerHTML = parts.join('');
  }

  function drawLegend() {
    const parts = [];
    Object.keys(STATE_NAMES).forEach(function (state) {
      parts.push('<span><svg width="18" height="10"><rect class="seg-' + state +
        '" width="18" height="10"/></svg> ' + STATE_NAMES[state] + '</span>');
    });
    Object.keys(MARK_NAMES).forEach(function (kind) {
      parts.push('<span><svg width="12" height="16"><g class="mark-' + kind + '">' + shape(kind, 6, 8, 16) +
        '</g></svg> ' + MARK_NAMES[kind] + '</span>');
    });
    document.getElementById('legend').innerHTML = parts.join('');
  }

  function drawPorts() {
    const container = document.getElementById('ports');
    data.ports.forEach(function (port) {
      if (port.tracks.length === 0 && port.marks.length === 0) return;
      const section = document.createElement('div');
      section.className = 'port';
      section.dataset.bridge = port.bridge;
      section.dataset.port = port.port;
      const blocking = port.role === 'alternate' || port.role === 'backup';
      section.innerHTML = '<h3>' + escaped(port.bridge) + ' ' + escaped(port.port === '*' ? 'every port' : port.port) +
        (port.port === '*' ? '' : '<span class="role' + (blocking ? ' blocking' : '') + '">' +
          escaped(port.role) + ' at the end</span>') + '</h3>';
      port.tracks.forEach(function (track) {
        const details = document.createElement('details');
        details.className = 'track';
        details.dataset.app = track.app;
        details.innerHTML = '<summary>' + escaped(track.app) + ' <span class="count">' + track.lanes.length +
          (track.lanes.length === 1 ? ' lane' : ' lanes') + '</span></summary>';
        const body = document.createElement('div');
        details.appendChild(body);
        const draw = function () {
          if (body.childElementCount === 0) body.innerHTML = trackSvg(port, track);
        };
        details.addEventListener('toggle', function () { if (details.open) draw(); });
        if (track.lanes.length <= COLLAPSE_BEYOND) {
          details.open = true;
          draw();
        }
        section.appendChild(details);
      });
      container.appendChild(section);
    });
  }

  // A bridge's tables, collapsed when long (thousands of VLANs on every port).
  function drawTables() {
    const section = document.getElementById('tables');
    const parts = [];
    data.tables.forEach(function (table) {
      const rows = (table.registrations.match(/\n/g) || []).length + (table.streams.match(/\n/g) || []).length;
      parts.push('<details class="tables" data-bridge="' + escaped(table.bridge) + '"' +
        (rows <= TABLE_ROWS_OPEN ? ' open' : '') + '><summary>' + escaped(table.bridge) +
        ' <span class="count">' + rows + ' rows</span></summary><pre class="registrations">' +
        escaped(table.registrations) + '</pre>' +
        (table.streams ? '<pre class="streams">' + escaped(table.streams) + '</pre>' : '') + '</details>');
    });
    section.insertAdjacentHTML('beforeend', parts.join(''));
  }

  function drawSummary() {
    let lanes = 0;
    data.ports.forEach(function (port) { port.tracks.forEach(function (track) { lanes += track.lanes.length; }); });
    const counted = function (n, one, many) { return n + ' ' + (n === 1 ? one : many); };
    document.getElementById('summary').textContent = [counted(data.nodes.length, 'bridge', 'bridges and stations'),
      counted(data.links.length, 'link', 'links'), seconds(data.until) + ' s', counted(lanes, 'lane', 'lanes')]
      .join(', ');
  }

  // The line behind a mark or a stretch, shown at once beside the pointer.
  function followPointer() {
    const tip = document.getElementById('tip');
    document.addEventListener('mousemove', function (event) {
      const target = event.target.closest ? event.target.closest('[data-tip]') : null;
      if (!target) {
        tip.hidden = true;
        return;
      }
      tip.textContent = target.getAttribute('data-tip');
      tip.hidden = false;
      tip.style.left = Math.min(event.clientX + 12, window.innerWidth - tip.offsetWidth - 4) + 'px';
      tip.style.top = (event.clientY + 14) + 'px';
    });
  }

  drawSummary();
  drawLegend();
  drawAxis();
  drawPorts();
  drawTables();
  followPointer();
}());
