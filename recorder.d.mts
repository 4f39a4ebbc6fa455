import * as recorder from './recorder.js';

export * from './recorder.js';
/** What `require('brisolte/recorder')` gives: an object with the classes. */
export default recorder;
