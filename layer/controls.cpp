#include <algorithm>

#include "stream.h"
#include "words.h"

namespace ppl {
namespace {

using detail::access_of;
using detail::ControlAccess;
using detail::ControlState;
using detail::OutputField;
using detail::refuse;
using detail::Stream;

// ---- Controls that are the output's ----

void set_field(Output &output, OutputField field, std::span<const int64_t> values) {
  const bool flag = values[0] != 0;
  switch (field) {
    case OutputField::decimation:
      output.decimation = static_cast<int>(values[0]);
      output.black_lines_top = static_cast<uint32_t>(values[1]);
      output.black_lines_bottom = static_cast<uint32_t>(values[2]);
      return;
    case OutputField::tier:
      if (flag)
        output.tier = Tier::p3;
      else if (output.tier == Tier::p3)
        output.tier = Tier::best;
      return;
    case OutputField::quality:
      output.quality = static_cast<uint32_t>(values[0]);
      return;
    case OutputField::statistics:
      output.statistics = flag;
      return;
    case OutputField::h_mirror:
      output.h_mirror = flag;
      return;
    case OutputField::v_mirror:
      output.v_mirror = flag;
      return;
    case OutputField::none:
      return;
  }
}

void get_field(const Output &output, OutputField field, int64_t *values) {
  switch (field) {
    case OutputField::decimation:
      values[0] = output.decimation;
      values[1] = output.black_lines_top;
      values[2] = output.black_lines_bottom;
      return;
    case OutputField::tier:
      values[0] = output.tier == Tier::p3;
      return;
    case OutputField::quality:
      values[0] = output.quality;
      return;
    case OutputField::statistics:
      values[0] = output.statistics;
      return;
    case OutputField::h_mirror:
      values[0] = output.h_mirror;
      return;
    case OutputField::v_mirror:
      values[0] = output.v_mirror;
      return;
    case OutputField::none:
      return;
  }
}

// ---- All ----

std::vector<int64_t> value_of(const Control &control, Stream &stream) {
  const ControlAccess &access = access_of(control);
  std::vector<int64_t> values(control.count);
  if (access.field != OutputField::none)
    get_field(stream.output(), access.field, values.data());
  else
    access.get(stream.control_state(), values.data());
  return values;
}

std::vector<int64_t> default_of(const Control &control, const ControlState &state) {
  const ControlAccess &access = access_of(control);
  if (!access.followed) return control.initial;
  const uint8_t *const table = access.followed(state);
  return {table, table + control.count};
}

// The values were tested.
void set_tested(const Control &control, std::span<const int64_t> values, Stream &stream) {
  const ControlAccess &access = access_of(control);
  if (access.field != OutputField::none) {
    Output output = stream.output();
    set_field(output, access.field, values);
    stream.set_output(output);
  } else if (!access.set(stream.control_state(), values.data())) {
    refuse("the library refused ", control.name, ", whose range is ", control.range_text());
  }
}

const Control &table_named(std::string_view name) {
  const Control &control = control_named(name);
  if (control.kind != ControlKind::table)
    refuse(name, " is no table: its range is ", control.range_text());
  return control;
}

}  // namespace

void Controls::set(std::string_view name, std::span<const int64_t> values) {
  const Control &control = control_named(name);
  require_values(control, values);
  set_tested(control, values, *stream_);
}

void Controls::set(std::string_view name, int64_t value) { set(name, std::span(&value, 1)); }

void Controls::set(std::string_view name, std::initializer_list<int64_t> values) {
  set(name, std::span<const int64_t>(values.begin(), values.size()));
}

void Controls::set_bytes(std::string_view name, std::span<const uint8_t> bytes) {
  table_named(name);
  set(name, std::vector<int64_t>(bytes.begin(), bytes.end()));
}

void Controls::set_text(std::string_view name, std::string_view text) {
  const Control &control = control_named(name);
  set_tested(control, parse_values(control, text), *stream_);
}

std::vector<int64_t> Controls::get(std::string_view name) const {
  return value_of(control_named(name), *stream_);
}

int64_t Controls::get_number(std::string_view name) const {
  const Control &control = control_named(name);
  if (control.count != 1) refuse(name, " has ", control.count, " values: ask for all of them");
  return value_of(control, *stream_)[0];
}

std::vector<uint8_t> Controls::get_bytes(std::string_view name) const {
  const std::vector<int64_t> values = value_of(table_named(name), *stream_);
  std::vector<uint8_t> bytes(values.size());
  std::transform(values.begin(), values.end(), bytes.begin(),
                 [](int64_t value) { return static_cast<uint8_t>(value); });
  return bytes;
}

std::string Controls::get_text(std::string_view name) const { return values_text(get(name)); }

void Controls::reset(std::string_view name) {
  const Control &control = control_named(name);
  if (control.is_kept) set_tested(control, default_of(control, stream_->control_state()), *stream_);
}

void Controls::reset() { load(Profile()); }

Profile Controls::profile() const {
  Profile profile;
  for (const Control &control : control_table()) {
    if (!control.in_profile()) continue;
    const std::vector<int64_t> values = value_of(control, *stream_);
    if (values != default_of(control, stream_->control_state())) profile.set(control.name, values);
  }
  return profile;
}

void Controls::load(const Profile &profile) {
  const auto wanted = [&](const Control &control) {
    const std::vector<int64_t> *const values = profile.find(control.name);
    return values ? *values : default_of(control, stream_->control_state());
  };
  // The output's first: with some values it has no picture, and then nothing is changed at all.
  Output output = stream_->output();
  for (const Control &control : control_table())
    if (access_of(control).field != OutputField::none)
      set_field(output, access_of(control).field, wanted(control));
  stream_->set_output(output);
  for (const Control &control : control_table()) {
    if (!control.in_profile() || access_of(control).field != OutputField::none) continue;
    // What sets others as well, also sets those back that were set by themselves.
    const bool leads = control.name == "gamma" || control.name == "contrast_c";
    const std::vector<int64_t> values = wanted(control);
    if (leads || values != value_of(control, *stream_)) set_tested(control, values, *stream_);
  }
}

}  // namespace ppl
