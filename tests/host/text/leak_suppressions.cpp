// libhyphen loses a pattern's string when a dictionary lists the pattern twice; that is once for each dictionary.

/// Asked by LeakSanitizer.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libhyphen.so\n";
}
