// Which tone a sound has.

import FFT from 'fft.js';

const SIZE = 16384;

// Sixty decibels below full scale; what the module plays to keep a loopback going is far below.
const AUDIBLE = 0.001 / 4;

/**
 * The strongest frequency in the middle of a signal, to the nearest step of its spectrum (`rate` / 16384), in Hz; none
 * for silence.
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
  return strongest > SIZE * AUDIBLE ? Math.round((strengths.indexOf(strongest) * rate) / SIZE) : undefined;
}
