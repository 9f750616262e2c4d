// Tests ask for blocks that no machine has: the address sanitizer is to refuse them as malloc does.

#ifdef __SANITIZE_ADDRESS__
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
#endif
