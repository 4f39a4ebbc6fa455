// What the sanitizers report about libraries that are not built with them. They call these functions by name.

// NOLINTBEGIN
extern "C" {
__attribute__((visibility("default"))) const char* __asan_default_options();
__attribute__((visibility("default"))) const char* __lsan_default_suppressions();
__attribute__((visibility("default"))) const char* __tsan_default_suppressions();

// The libraries are built without frame pointers, so that the fast way would see one caller only.
const char* __asan_default_options() {
  return "fast_unwind_on_malloc=0";
}

// Leaks that the callers can do nothing about: x264 keeps its parameters when it refuses to open, and
// FFmpeg's Quick Sync encoders their queue when there is no device.
const char* __lsan_default_suppressions() {
  return "leak:libx264.so\nleak:av_fifo_alloc2\n";
}

// The libraries order what their threads do, and count a buffer's references, with atomics that the sanitizer
// does not see.
const char* __tsan_default_suppressions() {
  return "called_from_lib:libavcodec.so\ncalled_from_lib:libavformat.so\ncalled_from_lib:libavutil.so\n"
         "called_from_lib:libx264.so\ncalled_from_lib:libx265.so\ncalled_from_lib:libvpx.so\n";
}
}
// NOLINTEND
