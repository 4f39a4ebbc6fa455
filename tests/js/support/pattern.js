'use strict';

// The known picture of tests/pattern/picture.cpp, as decoded frames must show it.

const assert = require('node:assert/strict');

const WHITE = [255, 255, 255];
const BLACK = [0, 0, 0];
const GREY = [128, 128, 128];
const QUARTERS = [
  [0xe0, 0x20, 0x20],
  [0x20, 0xc0, 0x40],
  [0x20, 0x40, 0xe0],
  [0xe0, 0xd0, 0x20],
];

const RULER = 16;
const LANE_HEIGHT = 32;
const CELL = 16;
const DIGITS = 12;
const BLOCK_WIDTH = (DIGITS + 2) * CELL;
const STEP = 8;
const TRACK = 320;
const NUMBERS = 1 << DIGITS;
const SMALLEST_HEIGHT = 128;

// What an encoder with chroma at half size and limited range may change where the picture is flat.
const TOLERANCE = 14;
// Edges smear: a colour is compared only where everything this near has the same colour.
const SMEAR = 4;
const SAMPLE_STEP = 5;

/** The picture of a window with this client size. */
class Picture {
  constructor(width, height, palette = 0) {
    Object.assign(this, { width, height, palette });
    const room = Math.min(width - 2 * RULER, TRACK) - BLOCK_WIDTH;
    const tracks = Math.max(1, Math.floor((width - 2 * RULER) / TRACK));
    this.tracks = Array.from({ length: tracks }, (_, i) => RULER + i * TRACK);
    this.positions = room < 0 || height < SMALLEST_HEIGHT ? 0 : Math.floor(room / STEP) + 1;
    const quarter = Math.floor(height / 4);
    this.lanes = this.positions > 0 ? [quarter - LANE_HEIGHT / 2, height - quarter - LANE_HEIGHT / 2] : [];
  }

  /** The colour at a place; undefined in a lane, where it moves, and outside. */
  colourAt(x, y) {
    if (x < 0 || y < 0 || x >= this.width || y >= this.height) {
      return undefined;
    }
    const insideRuler = x >= RULER && x < this.width - RULER;
    if (insideRuler && this.lanes.some((top) => y >= top && y < top + LANE_HEIGHT)) {
      return undefined;
    }
    if (y < RULER || y >= this.height - RULER) {
      return rulerColour(x);
    }
    if (!insideRuler) {
      return rulerColour(y);
    }
    const quarter = (y < Math.floor(this.height / 2) ? 0 : 2) + (x < Math.floor(this.width / 2) ? 0 : 1);
    return QUARTERS[(quarter + this.palette) % QUARTERS.length];
  }
}

const rulerColour = (along) => (Math.floor(along / RULER) % 2 === 0 ? WHITE : BLACK);

/** Where a frame lies on the picture: the frame's pixel (0, 0) shows the picture's (left, top). */
const view = (frame, { picture, left = 0, top = 0 }) => ({
  ...frame,
  picture,
  left,
  top,
  flatColourAt(x, y) {
    const near = [-SMEAR, 0, SMEAR].flatMap((dx) => [-SMEAR, 0, SMEAR].map((dy) => [x + left + dx, y + top + dy]));
    const colours = near.map(([px, py]) => picture.colourAt(px, py));
    return colours.every((colour) => colour && colour === colours[0]) ? colours[0] : undefined;
  },
});

const pixelOf = ({ pixels, width }, x, y) => {
  const at = (y * width + x) * 3;
  return [pixels[at], pixels[at + 1], pixels[at + 2]];
};

const near = (seen, wanted, tolerance = TOLERANCE) => seen.every((value, i) => Math.abs(value - wanted[i]) <= tolerance);

/**
 * Every flat place of an RGB frame has the picture's colour.
 * @param {{pixels: Buffer, width: number, height: number}} frame
 * @param {{picture: Picture, left?: number, top?: number, tolerance?: number}} place
 */
function assertPicture(frame, place) {
  const seenFrom = view(frame, place);
  const wrong = [];
  let compared = 0;
  for (let y = 0; y < frame.height; y += SAMPLE_STEP) {
    for (let x = 0; x < frame.width; x += SAMPLE_STEP) {
      const wanted = seenFrom.flatColourAt(x, y);
      if (wanted) {
        compared += 1;
        const seen = pixelOf(frame, x, y);
        if (!near(seen, wanted, place.tolerance)) {
          wrong.push(`(${x}, ${y}): ${seen} instead of ${wanted}`);
        }
      }
    }
  }
  assert.ok(compared > 0, 'no place of the frame could be compared');
  assert.equal(wrong.length, 0, `${wrong.length} of ${compared} places are wrong, first ${wrong.slice(0, 5).join('; ')}`);
}

/**
 * Every pixel of an RGB frame that nothing has compressed is the picture's, except where it moves.
 * @param {{pixels: Buffer, width: number, height: number}} frame
 * @param {{picture: Picture, left?: number, top?: number}} place as in assertPicture
 */
function assertPixels(frame, { picture, left = 0, top = 0 }) {
  let compared = 0;
  for (let y = 0; y < frame.height; y += 1) {
    for (let x = 0; x < frame.width; x += 1) {
      const wanted = picture.colourAt(x + left, y + top);
      if (wanted) {
        compared += 1;
        const seen = pixelOf(frame, x, y);
        if (!near(seen, wanted, 0)) {
          assert.fail(`(${x}, ${y}) is ${seen} instead of ${wanted}`);
        }
      }
    }
  }
  assert.ok(compared > 0, 'no pixel of the frame could be compared');
}

/**
 * The rulers that the frame shows have their edges where they belong, to the pixel: before each edge one colour, after
 * it the other. At least one edge across and one edge down must be seen when `across` and `down` ask for them.
 */
function assertRulersToThePixel(frame, { picture, left = 0, top = 0, across = true, down = true }) {
  const brightness = (x, y) => pixelOf(frame, x, y).reduce((sum, value) => sum + value, 0) / 3;
  const middles = (length) => [RULER / 2, length - RULER / 2];
  const rows = middles(picture.height).map((y) => y - top).filter((y) => y >= 0 && y < frame.height);
  const columns = middles(picture.width).map((x) => x - left).filter((x) => x >= 0 && x < frame.width);
  const edges = [
    ...rows.flatMap((y) => edgesIn(picture.width, left, frame.width, 0).map((x) => [brightness(x - 1, y), brightness(x, y), x + left])),
    ...columns.flatMap((x) =>
      edgesIn(picture.height, top, frame.height, RULER).map((y) => [brightness(x, y - 1), brightness(x, y), y + top]),
    ),
  ];
  assert.ok(!across || rows.length > 0, 'the frame shows no ruler across');
  assert.ok(!down || columns.length > 0, 'the frame shows no ruler down');
  for (const [before, after, edge] of edges) {
    const rising = rulerColour(edge) === WHITE;
    assert.ok(
      rising ? before < 128 && after >= 128 : before >= 128 && after < 128,
      `the ruler's edge at ${edge} is not there: ${before} and ${after}`,
    );
  }
}

// Where the ruler changes its colour, in the frame; the rulers down end where those across begin.
function edgesIn(length, offset, frameLength, corner) {
  const edges = [];
  for (let at = RULER + corner; at < length - corner; at += RULER) {
    edges.push(at - offset);
  }
  return edges.filter((at) => at >= 1 && at < frameLength);
}

/** Every place of this rectangle of an RGB frame has one colour. */
function assertColour(frame, { left, top, right, bottom }, wanted, tolerance = TOLERANCE) {
  for (let y = top; y < bottom; y += SAMPLE_STEP) {
    for (let x = left; x < right; x += SAMPLE_STEP) {
      const seen = pixelOf(frame, x, y);
      assert.ok(near(seen, wanted, tolerance), `(${x}, ${y}) is ${seen} instead of ${wanted}`);
    }
  }
}

/**
 * The number that an RGB frame shows. Throws when a block shows none, or when the blocks disagree: then the frame is put
 * together from several pictures.
 */
function readNumber(frame, { picture, left = 0, top = 0 }) {
  const travel = BLOCK_WIDTH + STEP * (picture.positions - 1);
  const rows = picture.lanes.map((y) => y - top).filter((y) => y >= 0 && y + LANE_HEIGHT <= frame.height);
  const columns = picture.tracks.map((x) => x - left).filter((x) => x >= 0 && x + travel <= frame.width);
  assert.ok(rows.length > 0 && columns.length > 0, 'the frame shows no place where a block moves');
  const numbers = rows.flatMap((y) => columns.map((x) => readTrack(frame, picture.positions, x, y)));
  assert.ok(numbers.every((number) => number === numbers[0]), `blocks show different pictures: ${numbers}`);
  return numbers[0];
}

function readTrack(frame, positions, x, y) {
  const found = [];
  for (let position = 0; position < positions; position += 1) {
    const number = readBlock(frame, x + STEP * position, y + (LANE_HEIGHT - CELL) / 2);
    if (number !== undefined && number % positions === position) {
      found.push(number);
    }
  }
  assert.equal(found.length, 1, `the lane at ${x}, ${y} shows ${found.length} numbers: ${found}`);
  return found[0];
}

function readBlock(frame, x, y) {
  const cells = Array.from({ length: DIGITS + 2 }, (_, i) => readCell(frame, x + i * CELL, y));
  if (cells.includes(undefined) || cells[0] !== 1 || cells[DIGITS + 1] !== 0) {
    return undefined;
  }
  let number = 0;
  let digit = 0;
  for (const cell of cells.slice(1, -1)) {
    digit ^= cell; // Gray code: a digit tells whether the binary digit differs from the one before it
    number = number * 2 + digit;
  }
  return number;
}

// 1 for white, 0 for black, undefined for anything between.
function readCell({ pixels, width }, x, y) {
  let sum = 0;
  for (let dy = CELL / 4; dy < (CELL * 3) / 4; dy += 1) {
    for (let dx = CELL / 4; dx < (CELL * 3) / 4; dx += 1) {
      sum += pixels[((y + dy) * width + x + dx) * 3];
    }
  }
  const mean = sum / ((CELL / 2) * (CELL / 2));
  return mean >= 190 ? 1 : mean <= 65 ? 0 : undefined;
}

/** How far the numbers of following frames are apart; the numbers start again after the largest. */
const steps = (numbers) => numbers.slice(1).map((number, i) => (number - numbers[i] + NUMBERS) % NUMBERS);

/** The frames' numbers advance and never go back. */
function assertAdvances(numbers) {
  const far = steps(numbers).filter((step) => step > NUMBERS / 2);
  assert.equal(far.length, 0, `a later frame shows an earlier picture: ${numbers}`);
  assert.ok(new Set(numbers).size > numbers.length / 2, `the block hardly moves: ${numbers}`);
}

module.exports = {
  Picture,
  BLACK,
  WHITE,
  GREY,
  NUMBERS,
  QUARTERS,
  TOLERANCE,
  assertAdvances,
  assertColour,
  assertPicture,
  assertPixels,
  assertRulersToThePixel,
  readNumber,
};
