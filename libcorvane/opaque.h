#pragma once

#include <cstring>

// A monitor object belongs to the program, which sets its storage aside without knowing what this
// library keeps: one pointer, at the start of that storage.

template <class State>
void attach(unsigned char* opaque, State* state) {
  std::memcpy(opaque, &state, sizeof state);
}

template <class State>
State& attached(const unsigned char* opaque) {
  State* state = nullptr;
  std::memcpy(&state, opaque, sizeof state);
  return *state;
}
