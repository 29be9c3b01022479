// What the desktop's libraries keep to the end of the program: font caches, the script engine's types, and what graphics
// drivers take that are unloaded by then. Everything else that is left over fails the tests.
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\n"
           "leak:libjavascriptcoregtk\n"
           "leak:<unknown module>\n";
}
