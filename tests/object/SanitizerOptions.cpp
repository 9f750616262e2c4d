// Tests ask for blocks that no machine has: the address sanitizer is to refuse them as malloc does.

#ifdef __SANITIZE_ADDRESS__
// Visible, since the sanitizer's own library looks it up.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}
#endif
