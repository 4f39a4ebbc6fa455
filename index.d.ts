/** A rectangle of the desktop, in the monitors' own pixels whatever the display scaling: those that recordings have. */
export interface Rect {
  left: number;
  top: number;
  right: number;
  bottom: number;
  /** `right` minus `left`. */
  width: number;
  /** `bottom` minus `top`. */
  height: number;
}

/** A display monitor. */
export interface Monitor {
  /** Position in the list, from 0; what `setMonitor` takes. */
  index: number;
  /** Device name, such as `\\.\DISPLAY1`; what `setMonitorByName` takes. */
  name: string;
  /** Whether the desktop's origin (0, 0) is on it. */
  isPrimary: boolean;
  /** The whole monitor in desktop coordinates. */
  rect: Rect;
}

/**
 * A top-level window that is visible, has a title and is larger than 50 pixels both ways. Windows of the shell that it keeps
 * out of sight are among these; recording one fails, or shows nothing.
 */
export interface WindowInfo {
  /** What `setWindow` takes. */
  handle: number;
  /** Its first 255 UTF-16 code units. */
  title: string;
  /** The name under which its program registered this kind of window. */
  className: string;
  /** Where it is, in desktop coordinates. */
  rect: Rect;
}

/** @deprecated The former name of `WindowInfo`, which browsers' type declarations have for something else. */
export type Window = WindowInfo;

/** An active audio endpoint. */
export interface AudioDevice {
  /** What `setMicrophoneDevice` or `setSpeakerDevice` takes. */
  id: string;
  /** The name that Windows shows to users. */
  name: string;
  /** Whether it is the default speaker, or the default microphone for communication. */
  isDefault: boolean;
  /** Whether it can be used now; the lists have only such devices. */
  isActive: boolean;
}

/**
 * A video encoder that works on this machine. `h263` is listed too, because FFmpeg's `mpeg4` brings it along, and records
 * nothing: no container of the package holds it.
 */
export interface VideoCodec {
  /** FFmpeg's number of the codec. */
  id: number;
  /** What `setEncoder` takes. */
  name: string;
  /** FFmpeg's words for it. */
  description: string;
  /** Whether it runs on a hardware block. */
  isHardwareAccel: boolean;
  /** FFmpeg's names of the pixel formats it accepts. */
  pixelFormats: string[];
}

/** A rectangle to record, in desktop coordinates: the monitors' own pixels, whatever the display scaling. */
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
 * Each instance has settings and a recording of its own; the log level is shared. Settings stay from one recording to the
 * next. While a recording runs, every setter but `setLogLevel` answers `false` and changes nothing.
 *
 * An argument of another type than the declared one, or out of range, throws an `Error`. Before a number's range is looked at
 * it becomes a whole one of 32 bits, a window's handle one of 64: `30.9` and `2 ** 32 + 30` are 30, `NaN` is 0. What goes wrong
 * otherwise is told by a `false` result. Why a recording does not start or a screenshot fails is a line on standard output;
 * most setters refuse without one.
 *
 * A recording goes on until `stopRecord`, also when nothing refers to its instance any more, or until its process or worker
 * thread ends. When that announces its end with the event `exit`, what still records is stopped first, and its file completed.
 *
 * An instance has a Direct3D device of its own: make one and keep it, rather than one for each call.
 */
export class Brisolte {
  /**
   * Makes an instance with the default settings. Nothing is captured yet.
   *
   * @throws {Error} "Failed to initialize Direct3D11 device" on a machine or in a session without a Direct3D 11 device
   * @throws {TypeError} when called without `new`
   */
  constructor();

  /**
   * Starts a recording into a new file in the output directory; see `getSaveFilePath`.
   *
   * It answers `true` also when all parts run but the file's header could not be written, and nothing is recorded: with sound
   * in a WebM, two sounds or none in an MP3, the encoder `h263`, a full disk. An ERROR line says so.
   *
   * @returns `false` when it cannot start, as into a file that cannot be written; the log says why
   * @throws {Error} "resource deadlock would occur" when all parts of the recording were made but one would not start,
   *   "HRESULT: 0x" and so on when that is the capture, or the system's text when the file system fails in an unusual way;
   *   the instance can be used again
   */
  startRecord(): boolean;

  /**
   * Ends the recording and completes its file. Blocks until what was captured is encoded and written.
   *
   * @returns `false` when none runs, without a line in the log
   */
  stopRecord(): boolean;

  /**
   * Tells whether a recording runs.
   *
   * @returns `true` from a successful `startRecord` until `stopRecord`, also when nothing is captured any more because the
   *   window was closed
   */
  isCapturing(): boolean;

  /**
   * Lists the monitors.
   *
   * @returns the monitors in the system's order, made anew at each call
   * @throws {Error} "Error getting monitors: " and the reason
   */
  getMonitors(): Monitor[];

  /**
   * Lists the windows that are visible, have a title and are larger than 50 pixels both ways.
   *
   * @returns the windows from front to back, made anew at each call
   * @throws {Error} "Error getting windows: " and the reason
   */
  getWindows(): WindowInfo[];

  /**
   * Writes one picture of the current target as a PNG file, also while a recording runs. Blocks for about a fifth of a
   * second. An existing file is replaced when the new one is complete, and stays when the screenshot fails. While
   * another program has it open this takes up to a second longer.
   *
   * A region is cut out of the picture of the monitor nearest to it, at its desktop coordinates: it is exact on a monitor
   * that begins at (0, 0). What reaches beyond the picture's right or lower edge is cut off; one that begins left of it or
   * above it is moved to its edge.
   *
   * @param filePath the file to write; its folder must exist
   * @returns `false` when there is no such target (a hidden or minimised window is not restored), no picture in time, or
   *   the file cannot be written
   * @throws {Error} when the capture service refuses
   */
  captureScreenshot(filePath: string): boolean;

  /**
   * Chooses what is recorded; its target is what was set last.
   *
   * @param mode 0 at first
   * @returns `false` while a recording runs
   * @throws {Error} "Invalid capture mode. Valid values: -1 (none), 0 (screen), 1 (window), 2 (region)"
   */
  setMode(mode: CaptureMode): boolean;

  /**
   * Records a monitor. Sets the mode to 0. Whether the monitor exists is seen when a recording starts.
   *
   * @param index a `Monitor`'s `index`; 0 at first
   * @returns `false` while a recording runs
   */
  setMonitor(index: number): boolean;

  /**
   * Records a monitor. Sets the mode to 0.
   *
   * @param name exactly a `Monitor`'s `name`
   * @returns `false` when no monitor has this name, or while a recording runs
   */
  setMonitorByName(name: string): boolean;

  /**
   * Records a window. Sets the mode to 1. Whether the window exists is seen when a recording starts.
   *
   * @param handle a `WindowInfo`'s `handle`
   * @returns `false` while a recording runs
   */
  setWindow(handle: number): boolean;

  /**
   * Records a region of the monitor that was set, or, when that shows nothing of it, of the monitor that shows most of
   * it. Sets the mode to 2. What lies beyond the monitor is black; with a width or a height of 0 or less the monitor that
   * was set is recorded whole.
   *
   * @param region in desktop coordinates, as monitors' rectangles are
   * @returns `false` while a recording runs
   * @throws {Error} "Region object must contain left, top, width, height properties"
   */
  setRegion(region: Region): boolean;

  /**
   * Sets about how many frames a second are recorded at most: a frame that comes sooner than four fifths of the time from one
   * to the next is dropped. From 60 pictures a second, 10 gives 12, and 25, 30 and 40
   * give 30.
   *
   * A frame comes when the system says that something on the monitor or the window has changed. When nothing does none is
   * recorded, but for the last one, which is shown until `stopRecord`, and in pauses of more than five minutes.
   *
   * @param framesPerSecond 1 to 120; 30 at first
   * @returns `false` while a recording runs
   * @throws {Error} "Frame rate must be in the range 1-120"
   */
  setFrameRate(framesPerSecond: number): boolean;

  /**
   * Sets where recordings go. Call it: without it they go to the root of the current drive, into which users of Windows who are
   * no administrators may not write.
   *
   * @param directory an existing directory, of any length; a relative one begins at what is the current directory when a
   *   recording starts, and stays there for that recording
   * @returns `false` for anything else, or while a recording runs
   * @throws {Error} when the system cannot tell what is there, as of a drive without a disc
   */
  setOutputDir(directory: string): boolean;

  /**
   * Chooses the video encoder, which also decides the container: MP4, WebM, MOV or AVI. Whether it works is seen when a
   * recording starts.
   *
   * @param name a `VideoCodec`'s `name`, or "mf_h264" or "mf_hevc" for Media Foundation, which has not encoded on a real
   *   Windows yet; "libx264" at first
   * @returns `false` while a recording runs
   * @throws {Error} "Setting output file path requires a string parameter", the words of `setOutputDir`, for what is no text
   */
  setEncoder(name: string): boolean;

  /**
   * Sets the bit rate of the picture.
   *
   * @param bitsPerSecond 100000 to 50000000; 5000000 at first
   * @returns `false` while a recording runs
   * @throws {Error} "Bitrate must be in the range 100Kbps-50Mbps"
   */
  setBitrate(bitsPerSecond: number): boolean;

  /**
   * Stores whether the cursor is wanted. Not applied: the cursor is recorded.
   *
   * @param capture `true` at first
   * @returns `false` while a recording runs
   */
  setCursorCapture(capture: boolean): boolean;

  /**
   * Stores whether a border around the target is wanted. Not applied: Windows shows its own.
   *
   * @param highlight `false` at first
   * @returns `false` while a recording runs
   */
  setBorderHighlight(highlight: boolean): boolean;

  /**
   * Sets how much is written to standard output, for all instances of the process, at any time. What FFmpeg writes to
   * standard error follows it: nothing at 5, its errors at 4, warnings too at 3 and 2, all at 1 and 0.
   *
   * @param level lines of this level and above are written; 2 at first
   * @throws {Error} for any other number
   */
  setLogLevel(level: LogLevel): void;

  /**
   * Tells how much is written to standard output.
   *
   * @returns the level of all instances of the process
   */
  getLogLevel(): LogLevel;

  /**
   * Tells where the latest recording is, from its start on.
   *
   * @returns the output directory as it was set, a backslash and the file's name: a relative path if the directory was
   *   one, from the current directory of the start. Also when that recording failed to start, in which case an empty file may
   *   be there, open until the instance starts anew or is collected; "" before the first
   */
  getSaveFilePath(): string;

  /**
   * Lists the microphones.
   *
   * @returns the active ones, made anew at each call; empty when the thread that calls is in COM's multithreaded apartment
   * @throws {Error} "Error getting microphones: " and the reason
   */
  getMicrophones(): AudioDevice[];

  /**
   * Lists the speakers.
   *
   * @returns the active ones, made anew at each call; empty when the thread that calls is in COM's multithreaded apartment
   * @throws {Error} "Error getting speakers: " and the reason
   */
  getSpeakers(): AudioDevice[];

  /**
   * Sets the microphone to record. Whether it is there is seen when a recording starts.
   *
   * @param id an `AudioDevice`'s `id`; "" for none, which it is at first
   * @returns `false` while a recording runs
   */
  setMicrophoneDevice(id: string): boolean;

  /**
   * Sets the speaker whose sound is recorded, as it is played.
   *
   * @param id an `AudioDevice`'s `id`; "" for none, which it is at first
   * @returns `false` while a recording runs
   */
  setSpeakerDevice(id: string): boolean;

  /**
   * Sets the bit rate of the sound. Only `mf_h264` and `mf_hevc` follow it: sound beside FFmpeg's encoders always has
   * 128 kbit/s, or 64 when the device's rate is below 16 kHz. The system's AAC encoder has 96000, 128000, 160000 and 192000; other rates become the nearest.
   *
   * @param bitsPerSecond 128000 at first
   * @returns `false` for 0 and below, or while a recording runs
   */
  setAudioBitrate(bitsPerSecond: number): boolean;

  /**
   * Lists the video encoders of the package's FFmpeg that work on this machine. Hardware encoders are opened to find out,
   * at every call. "mf_h264" and "mf_hevc", which are not FFmpeg's, are not in the list.
   *
   * @returns the encoders in FFmpeg's order
   * @throws {Error} "Error getting supported video codecs: " and the reason
   */
  getSupportVideoCodec(): VideoCodec[];
}
