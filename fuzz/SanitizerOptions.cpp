// What the address sanitizer of the fuzz targets does by default, changed where ASAN_OPTIONS says
// so.

// Freed blocks wait for reuse until 8 MiB of them have gathered, which no input reaches. With the
// usual 256 MiB every block is of memory that the processor has not in its caches, and that the
// kernel has to clear first.
extern "C" const char* __asan_default_options() {
  return "quarantine_size_mb=8:thread_local_quarantine_size_kb=256:malloc_context_size=12";
}
