'use strict';

/** Numbers that look random and are the same again for the same seed, which is a whole number from 0 to 2^32 - 1. */
class Random {
  constructor(seed) {
    this.state = seed >>> 0;
  }

  /** From 0 to below 1. */
  next() {
    this.state = (this.state + 0x6d2b79f5) >>> 0;
    let mixed = Math.imul(this.state ^ (this.state >>> 15), this.state | 1);
    mixed ^= mixed + Math.imul(mixed ^ (mixed >>> 7), mixed | 61);
    return ((mixed ^ (mixed >>> 14)) >>> 0) / 2 ** 32;
  }

  /** A whole number from 0 to below `count`. */
  below(count) {
    return Math.floor(this.next() * count);
  }

  /** One of a list. */
  of(list) {
    return list[this.below(list.length)];
  }

  /** Whether something happens that happens with this probability. */
  chance(probability) {
    return this.next() < probability;
  }

  /** A key of `weights`, as often as its number says. */
  weighted(weights) {
    const all = Object.entries(weights);
    let left = this.next() * all.reduce((sum, [, weight]) => sum + weight, 0);
    return all.find(([, weight]) => (left -= weight) < 0)?.[0] ?? all.at(-1)[0];
  }
}

module.exports = { Random };
