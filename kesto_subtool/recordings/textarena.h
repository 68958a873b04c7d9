// Many short texts that live equally long.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

// Keeps texts in a few large blocks. They stay where they are until the arena goes.
class CTextArena
{
public:
	// A zero-terminated copy. The text must be shorter than BLOCK_SIZE and hold no zero byte.
	const char *Add( std::string_view text );

	static constexpr size_t BLOCK_SIZE = 65536; // bytes

private:
	std::vector<std::unique_ptr<char[]>> m_Blocks;
	size_t m_nFree = 0; // bytes at the end of the last block
};
