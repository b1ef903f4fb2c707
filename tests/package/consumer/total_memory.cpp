#include <iostream>
#include <memory_mon.h>

int main() {
  memory::MEMORY_MON memory;
  std::cout << memory.corvane_getMemStats()[0] << '\n';
}
