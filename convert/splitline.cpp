#include "splitline.h"

#include "fields.h"

std::vector<std::string> splitline(std::string line) {
  Fields fields;
  cutFields(line, fields);
  return {fields.begin(), fields.end()};
}
