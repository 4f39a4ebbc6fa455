'use strict';

const METHODS = {
  monitors: 'getMonitors',
  windows: 'getWindows',
  microphones: 'getMicrophones',
  speakers: 'getSpeakers',
  encoders: 'getSupportVideoCodec',
};

/** One of the module's lists. */
const listOf = (instance, kind) => instance[METHODS[kind]]();

module.exports = { listOf };
