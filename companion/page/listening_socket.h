#pragma once

#include <cstdint>

/// Lets a listening socket take a port that a program has just left, but never one that another program listens on. To
/// be called before it is bound.
void takePortAlone(std::intptr_t socket);
