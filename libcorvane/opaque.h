#pragma once

#include <new>

// A monitor object belongs to the program, which sets its storage aside without knowing what this
// library keeps: one pointer, at the start of that storage.

template <class State>
void attach(unsigned char* opaque, State* state) {
  new (opaque) State*(state);
}

template <class State>
State& attached(unsigned char* opaque) {
  return **std::launder(reinterpret_cast<State**>(opaque));
}
