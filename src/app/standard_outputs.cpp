#include "app/standard_outputs.h"

#include <cstdio>
#include <iostream>

void flushStandardOutputs() {
    std::cout.flush();
    std::cerr.flush();
    std::clog.flush();
    std::fflush(stdout);
    std::fflush(stderr);
}
