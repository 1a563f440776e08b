#include "app/program.h"

int main(int argc, char** argv) {
    return runProgram(systemPlatform(), argc, argv);
}
