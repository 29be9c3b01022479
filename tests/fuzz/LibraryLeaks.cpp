// Suppresses allocations that the desktop's libraries retain until exit. Effective with the slow unwinder
// (fast_unwind_on_malloc=0); without LeakSanitizer, never called.

extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:ld-linux\n"
           "leak:g_intern_\n"
           "leak:g_quark_\n";
}
