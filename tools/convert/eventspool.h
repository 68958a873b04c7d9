// Sorts any number of events by time in bounded memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/convert/traceevent.h"

namespace convert
{
// Events of the same time keep their order. What does not fit into memory goes, in sorted runs, into a file without a
// name that vanishes with the spool.
class CEventSpool
{
public:
	static constexpr size_t RUN_EVENTS = 1u << 20; // 32 MiB

	// The folder takes the file, if there has to be one.
	explicit CEventSpool( std::string folder, size_t nRunEvents = RUN_EVENTS );
	~CEventSpool();
	CEventSpool( const CEventSpool & ) = delete;
	CEventSpool &operator=( const CEventSpool & ) = delete;

	// Before the first Add, for an input of that length (-1 = it is not known): the events of most inputs take no more
	// memory than that, and are then never copied because there are more of them.
	void Expect( int64_t nInputBytes );

	bool Add( const TraceEvent &event ); // false, here and below: Problem() says why
	bool BeginReading();                 // after the last Add; once
	const TraceEvent *Next();            // valid until the next call; null at the end and on a problem

	uint64_t Count() const { return m_nCount; }
	const std::string &Folder() const { return m_Folder; }
	size_t RunEvents() const { return m_nRunEvents; }
	const std::string &Problem() const { return m_Problem; }

private:
	struct Run
	{
		uint64_t m_nNext = 0; // event of the file to be read next
		uint64_t m_nEnd = 0;
		std::vector<TraceEvent> m_Window;
		size_t m_nRead = 0; // of the window
	};

	void SortEvents();
	bool WriteRun();
	bool OpenFile();
	bool Fail( const char *pWhat );
	bool FillWindow( Run &run );
	void ChooseRun();
	const TraceEvent *NextOfRuns();

	std::string m_Folder;
	size_t m_nRunEvents;
	std::vector<TraceEvent> m_Events;
	bool m_bSorted = true; // m_Events
	uint64_t m_nCount = 0;
	size_t m_nRead = 0; // of m_Events, when there are no runs
	int m_nFile = -1;
	std::vector<Run> m_Runs;
	size_t m_nRun = 0;       // the run with the earliest event
	int64_t m_nRunLimit = 0; // its events up to this time come before all others
	std::string m_Problem;
};
} // namespace convert
