// Keeps processor cores busy until it is killed: burner THREADS

#include <cstdlib>
#include <thread>

namespace {

[[noreturn]] void burn() {
  for (volatile unsigned count = 0;;)
    count = count + 1;
}

}  // namespace

int main(int argc, char** argv) {
  for (long more = argc > 1 ? std::atol(argv[1]) : 1; more > 1; --more)
    std::thread(burn).detach();
  burn();
}
