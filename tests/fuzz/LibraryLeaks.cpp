// What the desktop's libraries keep for as long as the program runs is no leak. Of use where the whole stack is looked
// at (fast_unwind_on_malloc=0); without LeakSanitizer, nothing calls it.

extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:ld-linux\n"
           "leak:g_intern_\n"
           "leak:g_quark_\n";
}
