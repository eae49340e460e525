#pragma once

#include <memory>
#include <vector>

/// The chain of group types by which photographs are grouped, outermost first. Replaced as a whole,
/// so that a background reader always holds one that stays as it is.
using PBGroupTypeArray = std::shared_ptr<const std::vector<int>>;
