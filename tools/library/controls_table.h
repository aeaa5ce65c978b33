// Every control of the library, in one table.
#pragma once

#include <ppl.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ppl::tool {

struct Range {
  int64_t low, high;
};

// A control takes some numbers or a table of bytes. Its name is that of the library's getter
// without the prefix; a band of two getters is named by what they share.
struct Control {
  const char *family;
  const char *name;
  size_t numbers;             // how many; 0 for a table
  size_t table_bytes;         // 0 for numbers
  size_t optional_numbers;    // so many at the end may be left out and are then 0
  std::vector<Range> ranges;  // one for all numbers, or one each
  const char *range_text;     // instead of the ranges, where they do not tell it; else null
  const char *initial;  // in the form that --set takes; for tables and where there is none, words
  const char *unit;
  bool fixed88;  // 8.8 fixed point, so that --set also takes decimal fractions
  const char *text;
  std::vector<const char *> setters;  // the library functions that this control reaches

  // False if the library refused. Exactly one of the two setters is there.
  bool (*set_numbers)(PplContext *, const int64_t *);
  bool (*set_table)(PplContext *, const uint8_t *);
  // Null where the library has no getter.
  void (*get_numbers)(const PplContext *, int64_t *);
  void (*get_table)(const PplContext *, uint8_t *);

  const Range &range(size_t index) const { return ranges[ranges.size() == 1 ? 0 : index]; }
  std::string range_in_words() const;
};

const std::vector<Control> &controls();

// Null if there is none of that name.
const Control *find_control(const std::string &name);

}  // namespace ppl::tool
