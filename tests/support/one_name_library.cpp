// A library with one of the driver's entry points, and none of the others.
extern "C" __attribute__((visibility("default"))) void SetComInfo(void*) {}
