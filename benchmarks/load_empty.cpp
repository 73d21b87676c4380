// A library with nothing in it: what loading costs at least.
extern "C" int kxbenchEmpty() { return 0; }
