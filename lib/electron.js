'use strict';

// What Electron's picker gives, as what is recorded.

const WINDOW = /^window:(\d+):\d+$/;
const SCREEN = /^screen:/;

/** Of Electron's module `screen`, which there is in the main process alone. */
const screenOf = () => require('electron').screen;

/**
 * @param {string | {id: string, display_id?: string}} source of `desktopCapturer.getSources`, or its id
 * @param {() => object} electronScreen gives Electron's `screen`
 * @returns {object | undefined} { window } or { place } of a monitor; undefined when it is no source of either kind
 */
function targetOfSource(source, electronScreen = screenOf) {
  const { id, display_id: display } = typeof source === 'string' ? { id: source } : Object(source);
  const window = WINDOW.exec(id);
  if (window) {
    return { window: Number(window[1]) };
  }
  return SCREEN.test(id) && display ? placeOf(display, electronScreen()) : undefined;
}

/** Electron counts in points, which on a scaled display are several pixels. */
function placeOf(displayId, screen) {
  const display = screen.getAllDisplays().find(({ id }) => String(id) === displayId);
  if (!display) {
    return undefined;
  }
  const { x: left, y: top } = screen.dipToScreenRect(null, display.bounds);
  return { place: { left, top } };
}

module.exports = { targetOfSource };
