// Brings parts of the world in as the camera moves: packed blocks are unpacked and checked, old ones are packed again.
#pragma once

#include <cstdint>
#include <vector>

#include "mathtypes.h"

namespace demo
{
class CStreaming
{
public:
	CStreaming();

	// Does a little of the work that waits.
	void Update();
	// Everything at once, as when the camera jumps: a hitch.
	void LoadEverything();

	uint32_t Broken() const { return m_nBroken; } // blocks that did not come back as they went; 0

private:
	static constexpr uint32_t BLOCKS = 48;
	static constexpr size_t BLOCK_BYTES = 24 * 1024;

	struct Block
	{
		std::vector<uint8_t> m_Packed;
		std::vector<uint8_t> m_Bytes; // empty while it is packed
		uint32_t m_nSum = 0;
	};

	void Load( Block &block );
	void Unload( Block &block );
	static uint32_t Sum( const std::vector<uint8_t> &bytes );
	static void Pack( const std::vector<uint8_t> &bytes, std::vector<uint8_t> &packed );
	static void Unpack( const std::vector<uint8_t> &packed, std::vector<uint8_t> &bytes );

	CRandom m_Random{ 41 };
	std::vector<Block> m_Blocks;
	uint32_t m_nNext = 0;
	uint32_t m_nBroken = 0;
};
} // namespace demo
