/// <reference types="node" />
import { EventEmitter } from 'node:events';
import type { AudioDevice, Monitor, Region, VideoCodec, WindowInfo } from './index.js';

export type { AudioDevice, Monitor, Rect, Region, VideoCodec, WindowInfo } from './index.js';

/** What a recording or a screenshot shows; the first monitor unless one of them is given. */
export interface Target {
  /** A `Monitor`'s `index` or `name`. With `region`: the one on which it lies, else the one that has most of it. */
  monitor?: number | string;
  /** A `WindowInfo`'s `handle`, or its whole title. */
  window?: number | string;
  /** A rectangle of the desktop. */
  region?: Region;
  /** A source of Electron's `desktopCapturer.getSources`, in the main process; of a window its `id` is enough. */
  source?: string | { id: string; display_id: string };
}

/** A sound to record. */
export interface Sound {
  /** An `AudioDevice`'s `id`, or `'default'`. */
  id: string;
  /** How loud, 0 to 10; 1, as it is, unless given. */
  volume?: number;
}

/** What is to be recorded, how, and where it goes. */
export interface RecorderOptions extends Target {
  /** The recording's file. Its ending must be what the encoder records into. It appears when the recording is complete. */
  file?: string;
  /** In place of `file`: a folder, in which the recording is named after the time of its start. */
  directory?: string;
  /** Whether `file` may replace one that is there; `false` unless given. */
  overwrite?: boolean;
  /** `false` records sound alone. */
  picture?: boolean;
  /** An `AudioDevice`'s `id`, or `'default'`; none unless given. */
  microphone?: string | Sound;
  /** An `AudioDevice`'s `id`, or `'default'`; none unless given. What it plays is recorded. */
  speaker?: string | Sound;
  /** At most about so many pictures a second, 1 to 120, as with `setFrameRate`; 30 unless given. */
  frameRate?: number;
  /** A `VideoCodec`'s `name`, `'mf_h264'` or `'mf_hevc'`; `'libx264'` unless given. */
  encoder?: string;
  /** Bits per second of the picture, 100000 to 50000000; 5000000 unless given. */
  bitrate?: number;
  /**
   * How the sound is encoded: `'aac'`, `'mp3'` or `'opus'` in an MP4, `'aac'` or `'mp3'` in a MOV, `'opus'` in a WebM, `'mp3'` in an AVI and
   * alone, `'aac'` with `mf_h264` and `mf_hevc`; the first of these unless given.
   */
  audioCodec?: 'aac' | 'mp3' | 'opus';
  /**
   * Bits per second of each sound, or the nearest that its codec has; unless given 160000 in AAC and Opus, half of it of a sound with one
   * channel, and 128000 in MP3 and with `mf_h264` and `mf_hevc`.
   */
  audioBitrate?: number;
  /** Stops the recording when it is so long, without pauses, or so large, or when its disk has less room. */
  stopAfter?: { seconds?: number; bytes?: number; freeBytes?: number };
  /** Splits the recording into files of at least this length, 1 s or more, or of at least this size. */
  segments?: { seconds?: number; bytes?: number };
  /**
   * Whether an MP4 or MOV can be played up to its last two seconds at any moment of its recording, also when the recorder's process is
   * killed, the machine loses power or the disk is full; `true` unless given. Not of `mf_h264` and `mf_hevc`.
   */
  safeFile?: boolean;
  /** `false` leaves the mouse pointer out, which needs Windows 10 version 2004; `true` unless given. */
  cursor?: boolean;
  /** `false` keeps Windows from drawing its border around what is recorded, which needs Windows 11; `true` unless given. */
  border?: boolean;
  /** The size in which the picture has to fit: a larger one is made smaller, and keeps its ratio. Not with `mf_h264` and `mf_hevc`. */
  scale?: { width: number; height: number };
  /** Options of FFmpeg's for the encoder, as `{ crf: 20 }`; they come before what it is told otherwise. Not with `mf_h264` and `mf_hevc`. */
  encoderOptions?: Record<string, number | string | boolean>;
  /** From which level on there are `log` events; `'info'` unless given. */
  logLevel?: LogLevel;
  /** Stops the recording, and keeps its file, when it is aborted. */
  signal?: AbortSignal;
}

/** How much a line of the log matters. */
export type LogLevel = 'debug' | 'info' | 'warning' | 'error';

/** A line that the recorder's process wrote. */
export interface LogEntry {
  time: Date;
  level: LogLevel;
  /** Who wrote it: the module, FFmpeg, or Node.js. */
  source: 'brisolte' | 'ffmpeg' | 'node';
  text: string;
}

/** How far a recording is. */
export interface Progress {
  /** Recorded so far, without the pauses. */
  seconds: number;
  /** Whether it is paused. */
  paused: boolean;
  /** Of all its files. */
  bytes: number;
  /** What its disk has left; not there where the system does not tell. */
  freeBytes?: number;
  /** Where it is now; it gets the name that was asked for when it is complete. */
  file: string;
  /** How loud each sound that is recorded was since the progress before: its loudest sample, as it is recorded, from 0 to 1. */
  levels: { microphone?: number; speaker?: number };
}

/** Something that the system could not do as it was asked, and that the recording goes on without. */
export interface RecorderWarning {
  code: 'cursorStays' | 'borderStays';
  /** Says what, and which Windows it needs. */
  message: string;
}

/** One file of a recording that is split. */
export interface Segment {
  file: string;
  seconds: number;
  bytes: number;
}

/** Why a recording ended; `freeBytes` also when the disk was nearly full without a limit. */
export type StopReason = 'requested' | 'seconds' | 'bytes' | 'freeBytes' | 'aborted' | 'failed';

/** A recording that has ended. */
export interface Recording {
  /** The last of `files`. */
  file: string;
  /** All that can be played, in their order: one, unless it was split. */
  files: string[];
  seconds: number;
  bytes: number;
  reason: StopReason;
  /** Why a file has the name that the module gave it rather than the one that was asked for. */
  problem?: string;
}

/** What a recorder tells. */
export interface RecorderEvents {
  /** It records. */
  start: [{ file: string }];
  /** What happens from now on is left out; so long is what was recorded. */
  pause: [{ file: string; seconds: number }];
  /** It goes on. */
  resume: [{ file: string; seconds: number }];
  /** Each second, also while it is paused. */
  progress: [Progress];
  log: [LogEntry];
  /** It records, though not quite as it was asked. May come before `start`. */
  warning: [RecorderWarning];
  /** A file of a recording that is split is complete. */
  segment: [Segment];
  /** It has ended, for whatever reason. */
  stop: [Recording];
  /** It was lost, or its file could not be completed. Nothing is thrown when nobody listens; `stop` follows. */
  error: [RecorderError];
}

/** A wish that can be given up. */
export interface Abortable {
  signal?: AbortSignal;
}

/**
 * Records the screen, a window or a region in a process of its own. The event loop is not blocked, the recording is completed
 * when the application ends or crashes, and the application goes on when the recorder crashes.
 *
 * The application does not end by itself while a recording runs.
 */
export class Recorder extends EventEmitter {
  /** @throws {TypeError} that names the option that is wrong */
  constructor(options: RecorderOptions);

  /** The process that records; undefined while there is none. */
  readonly pid: number | undefined;

  /** Whether a recording runs, also while it is paused. */
  readonly recording: boolean;

  /** Whether the recording that runs is paused. */
  readonly paused: boolean;

  /**
   * Starts a recording; the process first, if there is none.
   *
   * Rejected with a `RecorderError` that says why it did not start, or with the reason of the signal. It is also when the
   * container cannot hold what is to be recorded.
   */
  start(): Promise<void>;

  /**
   * Leaves out what happens until `resume`: in the file the picture and the sound after the pause follow what was before it. The devices
   * stay open, and `stop` is heard. Nothing happens when it is paused already.
   *
   * Rejected with a `RecorderError` when nothing is recorded.
   */
  pause(): Promise<void>;

  /** Goes on recording. Nothing happens when it is not paused. Rejected with a `RecorderError` when nothing is recorded. */
  resume(): Promise<void>;

  /**
   * Records silence in place of a sound, also in recordings that start later. Before, during and after a recording.
   *
   * Rejected with a `TypeError` when it is not recorded.
   */
  mute(sound: 'microphone' | 'speaker'): Promise<void>;

  /** Records a sound again. */
  unmute(sound: 'microphone' | 'speaker'): Promise<void>;

  /** Records a sound so loud, 0 to 10, also in recordings that start later; 1 leaves it as it is. */
  setVolume(sound: 'microphone' | 'speaker', volume: number): Promise<void>;

  /**
   * Stops the recording; resolves when its file is complete. When it has ended already, that is how it ended.
   *
   * Rejected with a `RecorderError` when the recording was lost or could not be completed.
   */
  stop(): Promise<Recording>;

  /** Stops what is recorded, and ends the process; without it that ends when nothing was asked of it for five seconds. */
  close(): Promise<void>;

  /** `close`, for `await using`; not there in Node.js versions without it. */
  [Symbol.asyncDispose](): Promise<void>;

  on<Name extends keyof RecorderEvents>(event: Name, listener: (...args: RecorderEvents[Name]) => void): this;
  once<Name extends keyof RecorderEvents>(event: Name, listener: (...args: RecorderEvents[Name]) => void): this;
  off<Name extends keyof RecorderEvents>(event: Name, listener: (...args: RecorderEvents[Name]) => void): this;

  /** Lists the monitors. */
  static monitors(options?: Abortable): Promise<Monitor[]>;

  /** Lists the windows that are visible, have a title and are larger than 50 pixels both ways, from front to back. */
  static windows(options?: Abortable): Promise<WindowInfo[]>;

  /** Lists the microphones. */
  static microphones(options?: Abortable): Promise<AudioDevice[]>;

  /** Lists the speakers. */
  static speakers(options?: Abortable): Promise<AudioDevice[]>;

  /** Lists the encoders that work on this machine. */
  static encoders(options?: Abortable): Promise<VideoCodec[]>;

  /**
   * Writes one picture as a PNG.
   *
   * @returns the whole path of the file
   */
  static screenshot(options: (Target & Abortable) | undefined, file: string): Promise<string>;
}

/** The kinds of a `RecorderError`; docs/recorder.md says what to do about each. */
export type RecorderErrorCode =
  | 'ERR_RECORDER_EXISTS'
  | 'ERR_RECORDER_FAILED'
  | 'ERR_RECORDER_INCOMPLETE'
  | 'ERR_RECORDER_LOAD'
  | 'ERR_RECORDER_LOST'
  | 'ERR_RECORDER_NOT_FOUND'
  | 'ERR_RECORDER_SCREENSHOT'
  | 'ERR_RECORDER_SPAWN'
  | 'ERR_RECORDER_START'
  | 'ERR_RECORDER_STATE'
  | 'ERR_RECORDER_TIMEOUT';

/** Something that a recorder could not do. Its message says what, why, and what to do. */
export class RecorderError extends Error {
  readonly name: 'RecorderError';
  readonly code: RecorderErrorCode;
  /** The ERROR lines of the log that belong to it; the first is the cause. */
  readonly failures: string[];
  /** The latest lines of the log. */
  readonly log: LogEntry[];
  /** What can be played of a recording that was lost. */
  readonly files: string[];
}
