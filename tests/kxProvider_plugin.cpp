// A library whose symbol another one needs.
extern "C" __attribute__((visibility("default"))) int kxProvidedValue() { return 41; }
