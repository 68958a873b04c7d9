// What a conversion had to repair and what it could not hold.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace convert
{
// Damage of the input. A conversion that met any ends with status 1.
enum class Repair
{
	Cut,             // the input ends early
	Unreadable,      // stretches that could not be read
	UnusableEvent,   // events without what they need: a kind, a name, a time that is a number
	NegativeTime,    // durations and weights below 0
	Unordered,       // events that were written later than they happened
	EndWithoutBegin, //
	BeginWithoutEnd, //
	Overlap,         // scopes that end after the scope around them
	Count
};

// What the target cannot hold, or what the user did not ask for. Does not change the status.
enum class Note
{
	OtherKind,        // events that are no scopes
	BeforeFirstFrame, // scopes before the first frame marker
	EmptyFrames,      // of a period, many in a row
	NameCut,
	NameCharacters,
	TooManyNames,
	TooManyNodes,
	LongTime,
	NegativeTime,
	ManyCalls,
	CallsLost,
	FramesMerged,
	StringsLost,
	NodeValuesLost,
	Widened,
	TimeRounded,
	UnreachableNode,
	DeepStack,
	AddedUp, // scopes of an input, for a target that could show each of them
	Count
};

class CReport
{
public:
	// The offset is in bytes of the input; -1 when it says nothing.
	void Add( Repair repair, int64_t nOffset = -1, const char *pDetail = "" );
	void Add( Note note, uint64_t nCount = 1 ) { m_Notes[static_cast<size_t>( note )] += nCount; }
	void Say( std::string text ) { m_Texts.push_back( std::move( text ) ); } // a line as it stands

	uint64_t Get( Repair repair ) const { return m_Repairs[static_cast<size_t>( repair )].m_nCount; }
	uint64_t Get( Note note ) const { return m_Notes[static_cast<size_t>( note )]; }
	bool IsDamaged() const;

	// One line each, without a line feed: repairs first, with the byte offset of the first of a kind.
	std::vector<std::string> Lines() const;

private:
	struct Counter
	{
		uint64_t m_nCount = 0;
		int64_t m_nOffset = -1;
		std::string m_Detail;
	};
	std::array<Counter, static_cast<size_t>( Repair::Count )> m_Repairs;
	std::array<uint64_t, static_cast<size_t>( Note::Count )> m_Notes{};
	std::vector<std::string> m_Texts;
};
} // namespace convert
