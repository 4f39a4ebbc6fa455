'use strict';

// The lists, for people.

const place = ({ left, top, width, height }) => `${width} x ${height} at ${left}, ${top}`;

const LINES = {
  Monitors: ['monitors', ({ index, name, isPrimary, rect }) => `${index}  ${name}  ${place(rect)}${isPrimary ? '  primary' : ''}`],
  Windows: ['windows', ({ handle, title, rect }) => `${handle}  "${title}"  ${place(rect)}`],
  Microphones: ['microphones', ({ id, name, isDefault }) => `${name}${isDefault ? '  default' : ''}\n    ${id}`],
  Speakers: ['speakers', ({ id, name, isDefault }) => `${name}${isDefault ? '  default' : ''}\n    ${id}`],
  Encoders: ['encoders', ({ name, description, isHardwareAccel }) => `${name}  ${description}${isHardwareAccel ? '  hardware' : ''}`],
};

/** @param {Record<string, object[]>} lists what Recorder lists, under the names of its methods */
function listsText(lists) {
  return Object.entries(LINES)
    .map(([title, [name, lineOf]]) => [`${title}:`, ...lists[name].map((entry) => `  ${lineOf(entry)}`)].join('\n'))
    .join('\n\n');
}

/** @returns {Promise<Record<string, object[]>>} all lists, under the names of Recorder's methods */
async function allLists(Recorder) {
  const names = Object.values(LINES).map(([name]) => name);
  const found = await Promise.all(names.map((name) => Recorder[name]()));
  return Object.fromEntries(names.map((name, i) => [name, found[i]]));
}

module.exports = { allLists, listsText };
