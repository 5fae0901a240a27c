// Preloaded by the sanitizer presets: libraries stay loaded, so that a leak report names the driver
// it comes from, which otherwise is gone by then and escapes its suppression.

extern "C" __attribute__((visibility("default"))) int dlclose(void *)
{
    return 0;
}
