// Which tone a sound has.

import FFT from 'fft.js';

const SIZE = 16384;

// Sixty decibels below full scale; what the module plays to keep a loopback going is far below.
const AUDIBLE = 0.001 / 4;

/**
 * The strongest frequency in the middle of a signal, in Hz; none for silence.
 * @param {Float32Array} samples
 * @param {number} rate samples a second
 */
export function strongestFrequency(samples, rate) {
  const from = Math.max(0, Math.floor((samples.length - SIZE) / 2));
  const windowed = Array.from({ length: SIZE }, (_, i) => {
    const hann = 0.5 - 0.5 * Math.cos((2 * Math.PI * i) / SIZE);
    return hann * (samples[from + i] ?? 0);
  });
  const fft = new FFT(SIZE);
  const spectrum = fft.createComplexArray();
  fft.realTransform(spectrum, windowed);
  const strengths = Array.from({ length: SIZE / 2 }, (_, i) => Math.hypot(spectrum[2 * i], spectrum[2 * i + 1]));
  strengths[0] = 0; // the mean of the signal, which is no tone
  const strongest = Math.max(...strengths);
  const step = strengths.indexOf(strongest);
  return strongest > SIZE * AUDIBLE ? Math.round(((step + peakOffset(strengths, step)) * rate) / SIZE) : undefined;
}

// Where between two steps of the spectrum the peak lies, from -0.5 to 0.5: the top of a parabola through the logarithms.
function peakOffset(strengths, step) {
  const [before, at, after] = [-1, 0, 1].map((offset) => Math.log((strengths[step + offset] ?? 0) + Number.EPSILON));
  const curve = before - 2 * at + after;
  return curve === 0 ? 0 : (0.5 * (before - after)) / curve;
}
