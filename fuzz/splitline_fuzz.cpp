#include "plain_convert.h"
#include "same.h"
#include "splitline.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  const std::string line(data, size);
  expectSame(joined(splitline(line)), joined(plain::split(line)), "splitline");
  return 0;
}
