// What every importer turns its input into.
#pragma once

#include <cstdint>

namespace convert
{
enum class EventKind : uint32_t // so wide that an event has no bytes without a value: events are written to files
{
	Begin,    // a scope begins
	End,      // the innermost open scope (of that name) ends
	Complete, // a scope with its duration
	Sample,   // a stack that was seen, with the time that it stands for
	Instant   // only cuts frames
};

constexpr uint32_t NO_NAME = 0xFFFFFFFF;

// Times are nanoseconds, from -MAX_TIME to MAX_TIME, so that any two can be subtracted.
constexpr int64_t MAX_TIME = int64_t{ 1 } << 61;

struct TraceEvent
{
	int64_t m_nTime = 0;
	int64_t m_nDuration = 0;    // Complete: 0 to MAX_TIME; Sample: the time that it stands for
	uint32_t m_nName = NO_NAME; // in the name table; Sample: in the stack table; End: may be NO_NAME
	uint32_t m_nThread = 0;     // in the thread table
	uint32_t m_nCalls = 1;
	EventKind m_Kind = EventKind::Begin;
};
static_assert( sizeof( TraceEvent ) == 32 );
} // namespace convert
