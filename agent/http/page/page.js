// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Shows /api/checks and keeps it up to date. Texts come from applications and are not trusted: they go into text nodes
// and never into HTML.

'use strict';

const statuses = ['critical', 'warning', 'unknown', 'ok'];
const pollMs = 1000;
const goneMs = 3000;
const historyMs = 20000;
const maxShown = 200;

const rows = new Map();      // by the number of the check
let shown = null;            // the last document
let filter = '';             // a status, or empty for all
let askedAt = null;          // the first question since the last answer; null between an answer and the next question
let answeredAt = Date.now();
let answerMs = 0;            // how long the last answer took
let clockOffset = 0;         // of the agent's clock

const byId = id => document.getElementById(id);

function element(name, className, text) {
  const made = document.createElement(name);
  if (className) made.className = className;
  if (text !== undefined) made.textContent = text;
  return made;
}

function setText(node, text) {
  if (node.textContent !== text) node.textContent = text;
}

function setStatus(node, status) {
  for (const each of statuses) node.classList.toggle(each, each === status);
}

// --- Times and numbers

function duration(seconds) {
  if (seconds < 60) return Math.max(0, Math.floor(seconds)) + ' s';
  if (seconds < 3600) return Math.floor(seconds / 60) + ' min';
  if (seconds < 172800) return Math.floor(seconds / 3600) + ' h ' + Math.floor(seconds % 3600 / 60) + ' min';
  return Math.floor(seconds / 86400) + ' days';
}

function secondsSince(time) {
  return (Date.now() + clockOffset - Date.parse(time)) / 1000;
}

function ago(time) {
  return time ? duration(secondsSince(time)) + ' ago' : 'never';
}

function valueText(metric) {
  if (metric.valueText === '') return '';
  return metric.unit === '' || metric.unit === '%' ? metric.valueText + metric.unit : metric.valueText + ' ' + metric.unit;
}

// --- The line of the last hour

const svgName = 'http://www.w3.org/2000/svg';
const lineWidth = 180;
const lineHeight = 36;

function svgElement(name, attributes) {
  const made = document.createElementNS(svgName, name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  return made;
}

function boundsOf(metric) {
  const bounds = [];
  for (const kind of ['warning', 'critical'])
    for (const end of ['lower', 'upper'])
      if (metric[kind][end] !== null) bounds.push({kind, at: metric[kind][end]});
  return bounds;
}

function drawLine(svg, values, metric) {
  const known = values.filter(value => value !== null);
  svg.replaceChildren();
  if (known.length === 0) return;
  const bounds = boundsOf(metric);
  let low = Math.min(...known);
  let high = Math.max(...known);
  const reach = Math.max(high - low, Math.abs(high) * 0.05, 1e-9) * 4;
  for (const bound of bounds) { // a bound far away would flatten the line
    if (bound.at >= low - reach && bound.at <= high + reach) {
      low = Math.min(low, bound.at);
      high = Math.max(high, bound.at);
    }
  }
  const least = Math.max(Math.abs(high) * 0.05, 1e-9); // noise must not fill the picture
  if (high - low < least) {
    low -= least / 2;
    high += least / 2;
  }
  const span = high - low;
  const y = value => 3 + (lineHeight - 6) * (1 - (value - low) / span);
  for (const bound of bounds) {
    if (bound.at < low || bound.at > high) continue;
    svg.append(svgElement('line', {class: 'bound ' + bound.kind, x1: 0, x2: lineWidth, y1: y(bound.at), y2: y(bound.at)}));
  }
  let path = '';
  let isDrawing = false;
  values.forEach((value, index) => {
    if (value !== null) {
      const x = lineWidth * index / (values.length - 1);
      path += (isDrawing ? 'L' : 'M') + x.toFixed(1) + ' ' + y(value).toFixed(1);
      if (!isDrawing) path += 'h0.1';
    }
    isDrawing = value !== null;
  });
  svg.append(svgElement('path', {class: 'value', d: path}));
  svg.setAttribute('aria-label', 'last hour: ' + Math.min(...known) + ' to ' + Math.max(...known));
}

// --- A check

class CheckRow {
  constructor(check) {
    this.check = check;
    this.metrics = new Map();
    this.history = {};
    this.historyAt = 0;
    this.node = element('details');
    this.node.id = 'check-' + check.number;
    this.pill = element('span', 'pill');
    this.name = element('span', 'name');
    this.flag = element('span', 'flag');
    this.since = element('span', 'since');
    this.says = element('span', 'says');
    const summary = element('summary');
    summary.append(this.pill, this.name, this.flag, this.since, this.says);
    this.body = element('div', 'wide');
    this.node.append(summary, this.body);
    this.node.open = check.status !== 'ok';
    this.node.addEventListener('toggle', () => this.showMetrics());
  }

  update(check) {
    this.check = check;
    setStatus(this.node, check.status);
    setStatus(this.pill, check.status);
    setText(this.pill, check.status);
    setText(this.name, check.name);
    setText(this.says, check.summary);
    const flags = [];
    if (check.mutedUntil) flags.push('muted until ' + new Date(check.mutedUntil).toLocaleString());
    if (check.stale) flags.push('silent');
    this.flag.hidden = flags.length === 0;
    setText(this.flag, flags.join(', '));
    this.tick();
    this.showMetrics();
  }

  tick() {
    setText(this.since, 'for ' + duration(secondsSince(this.check.since)));
    this.since.title = 'since ' + this.check.since + ', updated ' + ago(this.check.lastUpdate);
  }

  showMetrics() {
    if (!this.node.open || (this.check.metrics.length === 0 && !this.table)) return;
    if (!this.table) this.addTable();
    const left = new Set(this.metrics.keys());
    for (const metric of this.check.metrics.slice(0, maxShown)) {
      left.delete(metric.number);
      this.showMetric(metric);
    }
    for (const number of left) {
      this.metrics.get(number).row.remove();
      this.metrics.delete(number);
    }
    if (Date.now() - this.historyAt > historyMs) this.loadHistory();
  }

  addTable() {
    this.table = element('table', 'metrics');
    const head = element('tr');
    for (const title of ['Status', 'Metric', 'Value', 'Warning', 'Critical', 'Last hour'])
      head.append(element('th', title === 'Value' ? 'number' : '', title));
    const thead = element('thead');
    thead.append(head);
    this.tbody = element('tbody');
    this.table.append(thead, this.tbody);
    this.body.append(this.table);
  }

  showMetric(metric) {
    let shown = this.metrics.get(metric.number);
    if (!shown) {
      shown = {row: element('tr'), pill: element('span', 'pill'), svg: svgElement('svg',
        {viewBox: '0 0 ' + lineWidth + ' ' + lineHeight, preserveAspectRatio: 'none', role: 'img'})};
      shown.cells = ['status', 'metric', 'number', 'warning', 'critical', 'hour'].map(
        name => element('td', name === 'number' ? 'number' : ''));
      shown.cells[3].dataset.label = 'warning';
      shown.cells[4].dataset.label = 'critical';
      shown.cells[0].append(shown.pill);
      shown.cells[5].append(shown.svg);
      shown.row.append(...shown.cells);
      this.tbody.append(shown.row);
      this.metrics.set(metric.number, shown);
    }
    setStatus(shown.pill, metric.status);
    setText(shown.pill, metric.status);
    setText(shown.cells[1], metric.name);
    setText(shown.cells[2], valueText(metric));
    setText(shown.cells[3], metric.warning.text);
    setText(shown.cells[4], metric.critical.text);
    shown.row.title = metric.summary;
    drawLine(shown.svg, this.history[metric.number] || [], metric);
  }

  async loadHistory() {
    this.historyAt = Date.now();
    try {
      const reply = await fetch('/api/history/' + this.check.number);
      if (reply.ok) this.history = (await reply.json()).metrics;
    } catch (error) {
      return; // the next poll tells that the agent is gone
    }
    for (const metric of this.check.metrics.slice(0, maxShown)) this.showMetric(metric);
  }
}

// --- The whole page

function compare(left, right) {
  return right.severity - left.severity || left.name.localeCompare(right.name) || left.number - right.number;
}

function isWanted(check) {
  const words = byId('search').value.toLowerCase().split(/\s+/).filter(word => word);
  const text = (check.name + ' ' + check.summary).toLowerCase();
  return (filter === '' || check.status === filter) && words.every(word => text.includes(word));
}

function showChecks() {
  const wanted = shown.checks.filter(isWanted).sort(compare);
  const visible = wanted.slice(0, maxShown);
  const left = new Set(rows.keys());
  const list = byId('checks');
  let place = list.firstChild;
  for (const check of visible) {
    left.delete(check.number);
    if (!rows.has(check.number)) rows.set(check.number, new CheckRow(check));
    const row = rows.get(check.number);
    if (row.check.status === 'ok' && check.status !== 'ok') row.node.open = true;
    row.update(check);
    if (row.node === place) place = place.nextSibling;
    else list.insertBefore(row.node, place); // others keep their place, and with it the focus
  }
  for (const number of left) {
    rows.get(number).node.remove();
    rows.delete(number);
  }
  byId('more').hidden = wanted.length <= maxShown;
  setText(byId('more'), 'and ' + (wanted.length - visible.length) + ' more; search to see them');
  byId('empty').hidden = wanted.length > 0;
  setText(byId('empty'), shown.checks.length === 0 ? 'No application has published a health check.' : 'No check matches.');
}

function showCounts() {
  const counts = byId('counts');
  for (const status of statuses) {
    let button = byId('count-' + status);
    if (!button) {
      button = element('button');
      button.id = 'count-' + status;
      button.type = 'button';
      button.append(element('span', 'pill ' + status, status), element('span', '', ''));
      button.addEventListener('click', () => {
        filter = filter === status ? '' : status;
        showAll();
      });
      counts.append(button);
    }
    setText(button.lastChild, ' ' + shown.counts[status]);
    button.setAttribute('aria-pressed', String(filter === status));
  }
}

function showApplications() {
  const body = byId('applications').tBodies[0];
  const order = {lost: 0, silent: 1, connected: 2};
  const colours = {lost: 'critical', silent: 'unknown', connected: 'ok'};
  const made = [...shown.applications].sort((a, b) => order[a.state] - order[b.state] || a.number - b.number).map(each => {
    const row = element('tr');
    const state = element('td');
    state.append(element('span', 'pill ' + colours[each.state], each.state));
    row.append(state, element('td', '', each.program || 'not known'),
      element('td', '', each.user === null ? 'not known' : typeof each.user === 'number' ? 'uid ' + each.user : each.user),
      element('td', '', each.process === 0 ? '' : String(each.process)),
      element('td', '', ago(each.since)), element('td', '', ago(each.lastFrame)),
      element('td', 'number', String(each.cells)));
    return row;
  });
  body.replaceChildren(...made);
}

function showAll() {
  setStatus(byId('worst'), shown.status);
  setText(byId('worst'), shown.status);
  setText(byId('host'), shown.host);
  setText(byId('footer'), 'vigil-agent ' + shown.agent);
  showCounts();
  showChecks();
  showApplications();
}

function titleWord(isGone) {
  if (isGone) return 'NO ANSWER';
  const bad = shown.checks.length - shown.counts.ok;
  return shown.status.toUpperCase() + (bad > 0 ? ' (' + bad + ')' : '');
}

function showState() {
  const now = Date.now();
  const isGone = askedAt !== null && now - askedAt > Math.max(goneMs, 3 * answerMs);
  document.body.classList.toggle('gone', isGone);
  byId('gone').hidden = !isGone;
  if (isGone)
    setText(byId('gone'), 'The agent has not answered for ' + duration((now - answeredAt) / 1000) + '. These are its last values.');
  if (shown) {
    document.title = titleWord(isGone) + ' ' + shown.host;
    setText(byId('updated'), 'Updated ' + new Date(answeredAt).toLocaleTimeString());
  }
  for (const row of rows.values()) row.tick();
}

async function poll() {
  const start = Date.now();
  if (askedAt === null) askedAt = start;
  try {
    const reply = await fetch('/api/checks', {signal: AbortSignal.timeout(20000)});
    if (reply.ok) {
      shown = await reply.json();
      askedAt = null;
      answeredAt = Date.now();
      answerMs = answeredAt - start;
      clockOffset = Date.parse(shown.time) - start;
      showAll();
    }
  } catch (error) {
    // showState() tells
  }
  showState();
  setTimeout(poll, Math.max(pollMs, 4 * (Date.now() - start))); // a host with many checks is asked less often
}

byId('search').addEventListener('input', () => shown && showAll());
document.addEventListener('keydown', event => {
  const search = byId('search');
  if (event.key === '/' && document.activeElement !== search && !event.ctrlKey && !event.metaKey && !event.altKey) {
    event.preventDefault();
    search.focus();
  } else if (event.key === 'Escape' && document.activeElement === search) {
    search.value = '';
    search.blur();
    if (shown) showAll();
  }
});
setInterval(showState, 1000);
poll();
