// What another library needs.

extern "C" int neededFunction() {
    return 2;
}
