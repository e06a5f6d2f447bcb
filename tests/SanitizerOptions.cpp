// Sanitizer settings built into every test binary, so a plain `ctest` or a direct run of a
// test binary behaves the same as the scripted runs.
//
// The leak suppressions cover only system libraries that keep process-lifetime caches by
// design (the GUI toolkit, fonts, D-Bus, the GL driver) and the x265 encoder that the decoder
// tests use to make streams; leaks in our own code are reported.

extern "C" {

const char* __asan_default_options() { return "detect_leaks=1"; }

const char* __ubsan_default_options() { return "print_stacktrace=1:halt_on_error=1"; }

const char* __lsan_default_options() { return "print_suppressions=0"; }

const char* __lsan_default_suppressions() {
  return "leak:libgtk-3\n"
         "leak:libgdk-3\n"
         "leak:libglib-2.0\n"
         "leak:libgobject-2.0\n"
         "leak:libgio-2.0\n"
         "leak:libfontconfig\n"
         "leak:libpango\n"
         "leak:libharfbuzz\n"
         "leak:libcairo\n"
         "leak:libX11\n"
         "leak:libxcb\n"
         "leak:libGLX\n"
         "leak:libGLdispatch\n"
         "leak:libgallium\n"
         "leak:swrast_dri\n"
         "leak:libLLVM\n"
         "leak:libdbus\n"
         "leak:libatk\n"
         "leak:libatspi\n"
         "leak:libEGL\n"
         "leak:libx265\n";
}

}  // extern "C"
