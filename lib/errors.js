'use strict';

// What a caller is told when something does not work.

// What to do about an ERROR line of the log; docs/errors.md has them all.
const ADVICE = [
  [/^Invalid or non-existent output directory/, 'Give a directory that exists.'],
  [/^Cannot write to output file/, 'Give a directory into which this user may write.'],
  [/^Encoder .* not found!/, 'Recorder.encoders() lists the names that can be given.'],
  [/^Failed to open encoder/, 'Try another of those that Recorder.encoders() lists.'],
  [/Failed to write file header: No space/, 'Make room on the disk.'],
  [/Failed to write file header/, 'Leave out the sound, or choose an encoder for MP4.'],
  [/^Invalid monitor index/, 'Recorder.monitors() lists the monitors that there are.'],
  [/^Invalid window handle/, 'The window is gone; Recorder.windows() lists those that there are.'],
  [/^Window (is not visible|still not visible)/, 'Let the window be shown first.'],
  [/^Failed to create (window|monitor) videoCapture item/, 'Choose another target: Windows does not let this one be recorded.'],
  [/microphone and speaker streams/, 'Choose another device, and look whether Windows lets applications use the microphone.'],
  [/^Failed to get frame$/, 'Try again.'],
  [/^Invalid crop region/, 'Choose a region that lies on a monitor.'],
  [/^Failed to initialize stream from filename|^Failed to replace file/, 'Give a file in a folder that exists, which nobody else has open.'],
  [/disk is nearly full|Failed to write trailer/, 'Make room on the disk.'],
];

const adviceFor = (failures) => {
  const [, advice] = ADVICE.find(([pattern]) => failures.some((text) => pattern.test(text))) ?? [];
  return advice;
};

/** Something that a recorder, or the process it runs in, could not do. */
class RecorderError extends Error {
  /**
   * @param {string} code ERR_RECORDER_…
   * @param {string} sentence what did not work
   * @param {object} [known] `failures`: the texts of the ERROR lines that belong to it; `log`: the latest entries of the log;
   *   `files`: what can be played of the recording
   */
  constructor(code, sentence, { failures = [], log = [], files = [] } = {}) {
    // The first of them is the cause, the others follow from it.
    const cause = failures.length > 0 ? ` ${ended(failures[0])}` : '';
    const advice = adviceFor(failures);
    super(`${ended(sentence)}${cause}${advice ? ` ${advice}` : ''}`);
    this.code = code;
    this.failures = failures;
    this.log = log;
    this.files = files;
  }

  get name() {
    return 'RecorderError';
  }
}

const ended = (text) => (/[.!?]$/.test(text.trim()) ? text.trim() : `${text.trim()}.`);

module.exports = { RecorderError };
