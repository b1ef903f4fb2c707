// The least that a converter can do: reads INPUT and writes BYTES bytes to OUTPUT.
//   copy_bytes INPUT OUTPUT BYTES

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

int main(int count, char** arguments) {
  if (count != 4) return 2;
  static char buffer[128UL << 10U];
  const int input = open(arguments[1], O_RDONLY | O_CLOEXEC);
  const int output = open(arguments[2], O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  ssize_t moved = 0;
  while ((moved = read(input, buffer, sizeof buffer)) > 0)
    continue;
  auto left = std::size_t(std::strtoull(arguments[3], nullptr, 10));
  for (; moved >= 0 && left > 0; left -= std::size_t(moved))
    moved = write(output, buffer, std::min(left, sizeof buffer));
  if (moved < 0) std::perror("copy_bytes");
  return moved < 0 ? 1 : 0;
}
