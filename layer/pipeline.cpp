#include "stream.h"
#include "words.h"

namespace ppl {

Pipeline::Pipeline(const Input &input, const Output &output)
    : stream_(std::make_unique<detail::Stream>(input, output)) {}
Pipeline::~Pipeline() = default;
Pipeline::Pipeline(Pipeline &&other) noexcept = default;
Pipeline &Pipeline::operator=(Pipeline &&other) noexcept = default;

detail::Stream &Pipeline::stream() const {
  if (!stream_) detail::refuse("this pipeline was moved away: use the one that it became");
  return *stream_;
}

const Input &Pipeline::input() const { return stream().input(); }
const Output &Pipeline::output() const { return stream().output(); }
void Pipeline::set_output(const Output &output) { stream().set_output(output); }

size_t Pipeline::input_bytes() const {
  return std::visit([](const auto &format) { return format.bytes(); }, stream().input());
}

const Layout &Pipeline::layout() const { return stream().plan().layout; }
Tier Pipeline::tier() const { return stream().tier(); }

void Pipeline::process(std::span<const uint8_t> frame, const Target &target) {
  stream().process(frame, target);
}

void Pipeline::consume(std::span<uint8_t> frame, const Target &target) {
  stream().consume(frame, target);
}

void Pipeline::process_fields(std::span<const uint8_t> first, std::span<const uint8_t> second,
                              const Target &target) {
  stream().process_fields(first, second, target);
}

void Pipeline::set_reference(std::span<const uint8_t> odd_lines) {
  stream().set_reference(odd_lines);
}
void Pipeline::forget_reference() { stream().forget_reference(); }

Statistics Pipeline::statistics() const { return stream().statistics(); }
uint64_t Pipeline::frames() const { return stream().frames(); }
Controls &Pipeline::controls() { return stream().controls(); }
const Controls &Pipeline::controls() const { return stream().controls(); }
const PplContext *Pipeline::context() const { return stream().context(); }

}  // namespace ppl
