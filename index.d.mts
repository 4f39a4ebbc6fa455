import * as brisolte from './index.js';

export * from './index.js';
/** What `require('brisolte')` gives: an object with the class. */
export default brisolte;
