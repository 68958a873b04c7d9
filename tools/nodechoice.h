// Nodes that a user names.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/nodetree.h"

// All nodes of that name or path (see CNodeTree), without those below another one of them, whose times are in that
// one's already. The name is compared as it is and, where it is UTF-8, as Latin-1 too. Ascending by row.
std::vector<int32_t> ChooseNodes( const CNodeTree &tree, const std::string &name );
