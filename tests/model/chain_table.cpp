#include "model/chain_table.h"

#include <stdexcept>

namespace ppl_model {

namespace {

using enum Demosaic;
using enum FlatCells;
using enum Gathering;

// clang-format off
constexpr ChainStages chain_table[] = {
    // quality  demosaic            flat cells  edges             chroma          leads      statistics  sampled    with filter
    {  0,       differences,        left_over,  Edges::gradient,  Chroma::direct, {4, 2, 1}, everything, {3, 4, 2}, {{4, 4, 3}}},
    {  1,       differences,        left_over,  Edges::none,      Chroma::direct, {4, 2, 0}, everything, {3, 4, 2}, {{4, 4, 3}}},
    {  2,       averages,           none,       Edges::none,      Chroma::direct, {2, 0, 0}, everything, {2, 2, 1}, {{3, 4, 2}}},
    {  10,      differences,        odd_lines,  Edges::gradient,  Chroma::direct, {4, 2, 1}, everything, {3, 4, 2}, {}},
    {  11,      differences,        even_lines, Edges::none,      Chroma::direct, {4, 2, 0}, everything, {3, 4, 2}, {}},
    {  12,      grey,               none,       Edges::in_place,  Chroma::direct, {2, 0, 0}, sums_only,  {2, 2, 1}, {}},
    {  14,      green_and_averages, none,       Edges::laplacian, Chroma::box,    {4, 1, 1}, everything, {3, 4, 2}, {}},
};
// clang-format on

}  // namespace

const ChainStages &stages_of(uint32_t quality) {
  for (const ChainStages &stages : chain_table)
    if (stages.quality == quality) return stages;
  throw std::logic_error("not the quality of a chain");
}

}  // namespace ppl_model
