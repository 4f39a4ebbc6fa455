/** A rectangle of the desktop in pixels. */
export interface Rect {
  left: number;
  top: number;
  right: number;
  bottom: number;
  /** right minus left */
  width: number;
  /** bottom minus top */
  height: number;
}

/** A display monitor. */
export interface Monitor {
  /** Position in the list, from 0; what `setMonitor` takes. */
  index: number;
  /** Device name; what `setMonitorByName` takes. */
  name: string;
  isPrimary: boolean;
  /** The whole monitor in desktop coordinates. */
  rect: Rect;
}

/** A top-level window that is visible, has a title and is larger than 50 pixels both ways. */
export interface Window {
  /** What `setWindow` takes. */
  handle: number;
  title: string;
  className: string;
  rect: Rect;
}

/** An active audio endpoint. */
export interface AudioDevice {
  /** What `setMicrophoneDevice` or `setSpeakerDevice` takes. */
  id: string;
  name: string;
  /** Whether it is the default speaker, or the default microphone for communication. */
  isDefault: boolean;
  isActive: boolean;
}

/** A video encoder that works on this machine. */
export interface VideoCodec {
  /** FFmpeg's number of the codec. */
  id: number;
  /** What `setEncoder` takes. */
  name: string;
  description: string;
  /** Whether it runs on a hardware block. */
  isHardwareAccel: boolean;
  /** Names of the pixel formats it accepts. */
  pixelFormats: string[];
}

/** A rectangle to record, in desktop coordinates. */
export interface Region {
  left: number;
  top: number;
  width: number;
  height: number;
}

/** What a recording shows: -1 nothing (sound alone), 0 a monitor, 1 a window, 2 a region. */
export type CaptureMode = -1 | 0 | 1 | 2;

/** 0 TRACE, 1 DEBUG, 2 INFO, 3 WARN, 4 ERROR, 5 FATAL (nothing is written). */
export type LogLevel = 0 | 1 | 2 | 3 | 4 | 5;

/**
 * Records the screen, a window or a region to a video file.
 *
 * Setters answer `false` and change nothing while a recording runs; those with a number, text, flag or object throw an
 * `Error` for an argument of another type or out of range. What goes wrong otherwise is told by a `false` result and a
 * line on standard output.
 */
export class Brisolte {
  /** Throws an `Error` when the machine has no Direct3D 11 device. */
  constructor();

  /**
   * Starts a recording into a new file in the output directory; see `getSaveFilePath`.
   * Answers `false` when it cannot. Throws an `Error` when a part of the recording was made but would not start or the
   * file could not be prepared; the instance can be used again.
   */
  startRecord(): boolean;

  /** Ends the recording and completes its file. Answers `false` when none runs. */
  stopRecord(): boolean;

  isCapturing(): boolean;

  /** The monitors, in the system's order. */
  getMonitors(): Monitor[];

  /** The windows, from front to back. */
  getWindows(): Window[];

  /**
   * Writes one picture of the current target as a PNG file, also while a recording runs. Takes about a fifth of a second,
   * for which it blocks. An existing file is replaced when the new one is complete, and stays when the screenshot fails.
   *
   * A region is cut out of the picture of the monitor nearest to it, at its desktop coordinates: it is exact on a monitor
   * that begins at (0, 0). One that begins left of the picture or above it keeps its size and is moved to its edge.
   *
   * Answers `false` when there is no such target (a hidden or minimised window is not restored), no picture in time, or
   * the file cannot be written. Throws an `Error` when the capture service refuses.
   */
  captureScreenshot(filePath: string): boolean;

  /** Chooses what is recorded; its target is what was set last. */
  setMode(mode: CaptureMode): boolean;

  /** Records the monitor with this index. */
  setMonitor(index: number): boolean;

  /** Records the monitor with exactly this name. Answers `false` when there is none. */
  setMonitorByName(name: string): boolean;

  /** Records the window with this handle. */
  setWindow(handle: number): boolean;

  /** Records a region of the monitor that was set. */
  setRegion(region: Region): boolean;

  /** Frames per second, 1 to 120; 30 at first. */
  setFrameRate(framesPerSecond: number): boolean;

  /** Takes an existing directory for the files. Answers `false` for anything else. */
  setOutputDir(directory: string): boolean;

  /**
   * The name of an FFmpeg video encoder, "libx264" at first, or "mf_h264" or "mf_hevc" for Media Foundation, which has
   * not encoded on a real Windows yet. It decides the container of the file: MP4, WebM, MOV or AVI.
   */
  setEncoder(name: string): boolean;

  /** Bits per second of the video, 100000 to 50000000; 5000000 at first. */
  setBitrate(bitsPerSecond: number): boolean;

  /** Stored, but not applied: the capture service's own default holds. */
  setCursorCapture(capture: boolean): boolean;

  /** Stored, but not applied: the capture service's own default holds. */
  setBorderHighlight(highlight: boolean): boolean;

  /** How much is written to standard output, for all instances of the process. */
  setLogLevel(level: LogLevel): void;

  getLogLevel(): LogLevel;

  /** The path of the latest recording; "" before the first. */
  getSaveFilePath(): string;

  /** The active microphones; the default one is that for communication. */
  getMicrophones(): AudioDevice[];

  /** The active speakers. */
  getSpeakers(): AudioDevice[];

  /** The microphone to record; "" for none. Whether it is there is seen when a recording starts. */
  setMicrophoneDevice(id: string): boolean;

  /** The speaker whose sound is recorded, as it is played; "" for none. */
  setSpeakerDevice(id: string): boolean;

  /**
   * Bits per second of the sound, above 0; 128000 at first. Only `mf_h264` and `mf_hevc` follow it: sound beside FFmpeg's
   * encoders always has 128 kbit/s.
   */
  setAudioBitrate(bitsPerSecond: number): boolean;

  /** The video encoders that work on this machine. Hardware encoders are tried at every call. */
  getSupportVideoCodec(): VideoCodec[];
}
