// Mesa's software rasteriser keeps a few small allocations of compiled display lists until
// the process ends; they are the driver's, not ours.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:swrast_dri.so\n";
}
