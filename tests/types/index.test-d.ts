import { expectAssignable, expectError, expectType } from 'tsd';
import { AudioDevice, Brisolte, CaptureMode, LogLevel, Monitor, Rect, Region, VideoCodec, Window, WindowInfo } from '../..';

const recorder = new Brisolte();

expectType<boolean>(recorder.startRecord());
expectType<boolean>(recorder.stopRecord());
expectType<boolean>(recorder.isCapturing());
expectType<Monitor[]>(recorder.getMonitors());
expectType<WindowInfo[]>(recorder.getWindows());
expectType<boolean>(recorder.captureScreenshot('C:\\picture.png'));
expectType<boolean>(recorder.setMode(-1));
expectType<boolean>(recorder.setMonitor(0));
expectType<boolean>(recorder.setMonitorByName('\\\\.\\DISPLAY1'));
expectType<boolean>(recorder.setWindow(65552));
expectType<boolean>(recorder.setRegion({ left: 0, top: 0, width: 640, height: 360 }));
expectType<boolean>(recorder.setFrameRate(60));
expectType<boolean>(recorder.setOutputDir('C:\\'));
expectType<boolean>(recorder.setEncoder('libx264'));
expectType<boolean>(recorder.setBitrate(5_000_000));
expectType<boolean>(recorder.setCursorCapture(true));
expectType<boolean>(recorder.setBorderHighlight(false));
expectType<void>(recorder.setLogLevel(2));
expectType<LogLevel>(recorder.getLogLevel());
expectType<string>(recorder.getSaveFilePath());
expectType<AudioDevice[]>(recorder.getMicrophones());
expectType<AudioDevice[]>(recorder.getSpeakers());
expectType<boolean>(recorder.setMicrophoneDevice(''));
expectType<boolean>(recorder.setSpeakerDevice(''));
expectType<boolean>(recorder.setAudioBitrate(192_000));
expectType<VideoCodec[]>(recorder.getSupportVideoCodec());

expectError(Brisolte());
expectError(recorder.setMode(3));
expectError(recorder.setLogLevel(6));
expectError(recorder.setFrameRate('30'));
expectError(recorder.setRegion({ left: 0, top: 0, width: 100 }));
expectError(recorder.captureScreenshot());
expectError(recorder.setOutputDir(undefined));

const [monitor] = recorder.getMonitors();
expectType<Rect>(monitor.rect);
expectType<boolean>(monitor.isPrimary);
expectAssignable<Region>(monitor.rect);
expectType<boolean>(recorder.setMonitor(monitor.index));
expectType<boolean>(recorder.setMonitorByName(monitor.name));

const [window] = recorder.getWindows();
expectType<boolean>(recorder.setWindow(window.handle));
expectType<string>(window.title);
expectType<string>(window.className);
// Its former name.
expectType<Window>(window);

const [codec] = recorder.getSupportVideoCodec();
expectType<boolean>(recorder.setEncoder(codec.name));
expectType<string[]>(codec.pixelFormats);

const modes: CaptureMode[] = [-1, 0, 1, 2];
modes.forEach((mode) => expectType<boolean>(recorder.setMode(mode)));

class Recorder extends Brisolte {}
expectAssignable<Brisolte>(new Recorder());
