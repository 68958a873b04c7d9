// Names of scopes, each once.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "tools/convert/report.h"

namespace convert
{
// Memory is bounded whatever the input says: names are cut, and from a number of names on all new ones are one.
class CNameTable
{
public:
	static constexpr size_t MAX_NAMES = 1u << 19;
	static constexpr size_t MAX_NAME_BYTES = 2048;
	static constexpr size_t MAX_BYTES = 32u << 20; // of all names
	static constexpr const char *COMMON_NAME = "(more names)";

	explicit CNameTable( CReport &report );

	uint32_t Intern( std::string_view name );                                 // of any bytes; ids ascend from 0
	const std::string &Get( uint32_t nName ) const { return m_Names[nName]; } // UTF-8
	uint32_t Count() const { return static_cast<uint32_t>( m_Names.size() ); }

private:
	static constexpr uint32_t EMPTY = 0xFFFFFFFF;
	struct Slot
	{
		uint32_t m_nHash = 0;
		uint32_t m_nName = EMPTY;
	};

	uint32_t Add( std::string_view name, uint32_t nHash, size_t nSlot );
	void Grow();

	CReport &m_Report;
	std::deque<std::string> m_Names;
	std::vector<Slot> m_Slots; // open addressing, a power of two
	size_t m_nBytes = 0;
};
} // namespace convert
