import { expectAssignable, expectError, expectType } from 'tsd';
import {
  AudioDevice,
  LogEntry,
  Monitor,
  Progress,
  Recorder,
  RecorderError,
  RecorderErrorCode,
  RecorderOptions,
  Recording,
  Segment,
  StopReason,
  VideoCodec,
  WindowInfo,
} from '../../recorder';

const recorder = new Recorder({
  monitor: 0,
  frameRate: 30,
  encoder: 'libx264',
  bitrate: 5_000_000,
  microphone: 'default',
  speaker: 'default',
  audioCodec: 'opus',
  audioBitrate: 96_000,
  file: 'C:\\Videos\\talk.mp4',
  stopAfter: { seconds: 3600, bytes: 4e9, freeBytes: 500e6 },
  segments: { seconds: 600 },
  safeFile: false,
  cursor: false,
  border: false,
  scale: { width: 1280, height: 720 },
  encoderOptions: { crf: 20, preset: 'fast', mbtree: false },
});

expectType<Promise<void>>(recorder.start());
expectType<Promise<Recording>>(recorder.stop());
expectType<Promise<void>>(recorder.close());
expectType<number | undefined>(recorder.pid);
expectType<boolean>(recorder.recording);
expectType<boolean>(recorder.paused);
expectType<Promise<void>>(recorder.pause());
expectType<Promise<void>>(recorder.resume());
expectType<Promise<void>>(recorder.mute('microphone'));
expectType<Promise<void>>(recorder.unmute('speaker'));
expectType<Promise<void>>(recorder.setVolume('speaker', 0.5));
expectError(recorder.mute('room'));

recorder.on('start', ({ file }) => expectType<string>(file));
recorder.on('progress', (progress) => expectType<Progress>(progress));
recorder.on('progress', ({ freeBytes }) => expectType<number | undefined>(freeBytes));
recorder.on('progress', ({ levels }) => expectType<number | undefined>(levels.microphone));
recorder.on('progress', ({ paused }) => expectType<boolean>(paused));
recorder.on('pause', ({ file, seconds }) => expectType<[string, number]>([file, seconds]));
recorder.on('resume', ({ file, seconds }) => expectType<[string, number]>([file, seconds]));
recorder.on('log', (entry) => expectType<LogEntry>(entry));
recorder.on('segment', (segment) => expectType<Segment>(segment));
recorder.on('warning', ({ code, message }) => {
  expectType<'cursorStays' | 'borderStays'>(code);
  expectType<string>(message);
});
recorder.once('stop', ({ reason }) => expectType<StopReason>(reason));
recorder.on('error', (error) => {
  expectType<RecorderError>(error);
  expectType<RecorderErrorCode>(error.code);
  expectType<string[]>(error.failures);
  expectAssignable<Error>(error);
});

expectType<Promise<Monitor[]>>(Recorder.monitors());
expectType<Promise<WindowInfo[]>>(Recorder.windows({ signal: new AbortController().signal }));
expectType<Promise<AudioDevice[]>>(Recorder.microphones());
expectType<Promise<AudioDevice[]>>(Recorder.speakers());
expectType<Promise<VideoCodec[]>>(Recorder.encoders());
expectType<Promise<string>>(Recorder.screenshot({ window: 'Notes' }, 'notes.png'));

expectAssignable<RecorderOptions>({ region: { left: 0, top: 0, width: 640, height: 360 }, directory: '.' });
expectAssignable<RecorderOptions>({ picture: false, speaker: 'default', directory: '.' });
expectAssignable<RecorderOptions>({ microphone: { id: 'default', volume: 2 }, speaker: { id: 'default' }, directory: '.' });

expectAssignable<RecorderOptions>({ source: { id: 'screen:0:0', display_id: '1' }, directory: '.' });

expectError(new Recorder());
expectError(new Recorder({ directory: '.', framerate: 30 }));
expectError(new Recorder({ directory: '.', audioCodec: 'flac' }));
expectError(new Recorder({ directory: '.', stopAfter: 5 }));
expectError(new Recorder({ directory: '.', scale: 0.5 }));
expectError(new Recorder({ directory: '.', encoderOptions: { crf: [20] } }));
expectError(recorder.on('progress', (progress: string) => progress));
expectError(Recorder.screenshot({}));

async function use(): Promise<void> {
  await using scoped = new Recorder({ directory: '.' });
  await scoped.start();
}
expectType<Promise<void>>(use());
