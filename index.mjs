import brisolte from './index.js';

export const { Brisolte } = brisolte;
export default brisolte;
