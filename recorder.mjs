import recorder from './recorder.js';

export const { Recorder, RecorderError } = recorder;
export default recorder;
