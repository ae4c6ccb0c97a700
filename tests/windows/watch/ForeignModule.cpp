// A library that has nothing to do with the program.
extern "C" __attribute__((visibility("default"))) int SomethingElse() {
    return 0;
}
