#include "model/output.h"

#include "model/report.h"

namespace ppl_model {

void Output::mark(int64_t offset, bool open) {
  const size_t index = static_cast<size_t>(offset);
  if (index >= open_.size()) {
    if (!open) return;
    open_.resize(index + 1, false);
  }
  open_[index] = open;
}

void Output::put(int64_t offset, uint8_t value) {
  if (!holds(offset)) return;
  base_[offset] = value;
  mark(offset, false);
}

void Output::suggest(int64_t offset, uint8_t value) {
  if (!holds(offset)) return;
  base_[offset] = value;
  mark(offset, true);
}

void Output::leave_open(int64_t offset) {
  if (holds(offset)) mark(offset, true);
}

void Output::report_open_bytes() const {
  auto &ranges = report().free_bytes;
  for (size_t i = 0; i < open_.size(); ++i) {
    if (!open_[i]) continue;
    if (!ranges.empty() && ranges.back().offset + ranges.back().length == i)
      ++ranges.back().length;
    else
      ranges.push_back({i, 1});
  }
}

int64_t Layout::declared_bytes() const {
  if (format == Format::i420) return S + 2 * Q;
  if (is_packed(format)) return 2 * S;
  return rgb_bytes(format) * S;
}

}  // namespace ppl_model
