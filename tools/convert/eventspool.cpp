#include "tools/convert/eventspool.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <span>

#include "recordings/hugepages.h"

namespace convert
{
static constexpr size_t WINDOWS_EVENTS = CEventSpool::RUN_EVENTS; // of all runs together
static constexpr size_t SMALLEST_WINDOW = 256;

CEventSpool::CEventSpool( std::string folder, size_t nRunEvents )
	: m_Folder( std::move( folder ) )
	, m_nRunEvents( nRunEvents )
{
}

CEventSpool::~CEventSpool()
{
	if ( m_nFile >= 0 )
		close( m_nFile );
}

void CEventSpool::Expect( int64_t nInputBytes )
{
	const auto nEvents = static_cast<size_t>( std::max<int64_t>( nInputBytes, 0 ) ) / sizeof( TraceEvent );
	m_Events.reserve( std::min( nEvents, m_nRunEvents ) );
	PreferHugePages( m_Events.data(), m_Events.capacity() * sizeof( TraceEvent ) );
}

bool CEventSpool::Add( const TraceEvent &event )
{
	if ( m_Events.size() == m_nRunEvents && !WriteRun() )
		return false;
	m_bSorted = m_bSorted && ( m_Events.empty() || m_Events.back().m_nTime <= event.m_nTime );
	m_Events.push_back( event );
	m_nCount++;
	return true;
}

bool CEventSpool::BeginReading()
{
	if ( m_Runs.empty() )
	{
		SortEvents();
		return m_Problem.empty();
	}
	if ( !WriteRun() )
		return false;
	std::vector<TraceEvent>().swap( m_Events );
	const size_t nWindow = std::max( WINDOWS_EVENTS / m_Runs.size(), SMALLEST_WINDOW );
	for ( Run &run : m_Runs )
	{
		run.m_Window.resize( static_cast<size_t>( std::min<uint64_t>( nWindow, run.m_nEnd - run.m_nNext ) ) );
		if ( !FillWindow( run ) )
			return false;
	}
	ChooseRun();
	return true;
}

const TraceEvent *CEventSpool::Next()
{
	if ( !m_Runs.empty() )
		return NextOfRuns();
	return m_nRead < m_Events.size() ? &m_Events[m_nRead++] : nullptr;
}

void CEventSpool::SortEvents()
{
	if ( !m_bSorted )
		std::stable_sort( m_Events.begin(), m_Events.end(),
			[]( const TraceEvent &a, const TraceEvent &b ) { return a.m_nTime < b.m_nTime; } );
	m_bSorted = true;
}

bool CEventSpool::Fail( const char *pWhat )
{
	if ( m_Problem.empty() )
		m_Problem = std::string( pWhat ) + " a temporary file in \"" + m_Folder + "\": " + std::strerror( errno );
	return false;
}

bool CEventSpool::OpenFile()
{
	m_nFile = open( m_Folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600 );
	if ( m_nFile >= 0 )
		return true;
	std::string name = m_Folder + "/.kesto-convert-XXXXXX"; // not every file system has files without a name
	m_nFile = mkostemp( name.data(), O_CLOEXEC );
	if ( m_nFile < 0 )
		return Fail( "cannot make" );
	unlink( name.c_str() );
	return true;
}

bool CEventSpool::WriteRun()
{
	if ( !m_Problem.empty() || ( m_nFile < 0 && !OpenFile() ) )
		return false;
	SortEvents();
	const uint64_t nFirst = m_Runs.empty() ? 0 : m_Runs.back().m_nEnd;
	const char *p = reinterpret_cast<const char *>( m_Events.data() );
	for ( size_t nLeft = m_Events.size() * sizeof( TraceEvent ); nLeft > 0; )
	{
		const ssize_t nWritten = write( m_nFile, p, nLeft );
		if ( nWritten < 0 && errno == EINTR )
			continue;
		if ( nWritten <= 0 )
			return Fail( "cannot write" );
		p += nWritten;
		nLeft -= static_cast<size_t>( nWritten );
	}
	Run &run = m_Runs.emplace_back();
	run.m_nNext = nFirst;
	run.m_nEnd = nFirst + m_Events.size();
	m_Events.clear();
	return true;
}

// Leaves an empty window when the run is read whole.
bool CEventSpool::FillWindow( Run &run )
{
	const uint64_t nEvents = std::min<uint64_t>( run.m_Window.size(), run.m_nEnd - run.m_nNext );
	run.m_Window.resize( static_cast<size_t>( nEvents ) );
	run.m_nRead = 0;
	char *p = reinterpret_cast<char *>( run.m_Window.data() );
	uint64_t nOffset = run.m_nNext * sizeof( TraceEvent );
	for ( size_t nLeft = run.m_Window.size() * sizeof( TraceEvent ); nLeft > 0; )
	{
		const ssize_t nBytes = pread( m_nFile, p, nLeft, static_cast<off_t>( nOffset ) );
		if ( nBytes < 0 && errno == EINTR )
			continue;
		if ( nBytes <= 0 )
			return Fail( "cannot read" );
		p += nBytes;
		nOffset += static_cast<uint64_t>( nBytes );
		nLeft -= static_cast<size_t>( nBytes );
	}
	run.m_nNext += nEvents;
	return true;
}

// Of runs with the same earliest time the first one goes first: it was written before.
void CEventSpool::ChooseRun()
{
	m_nRun = m_Runs.size();
	int64_t nEarliest = INT64_MAX;
	m_nRunLimit = INT64_MAX;
	for ( size_t i = 0; i < m_Runs.size(); i++ )
	{
		if ( m_Runs[i].m_Window.empty() )
			continue;
		const int64_t nTime = m_Runs[i].m_Window[m_Runs[i].m_nRead].m_nTime;
		if ( m_nRun == m_Runs.size() || nTime < nEarliest )
		{
			// The run chosen so far goes before this one at its own time.
			m_nRunLimit = m_nRun == m_Runs.size() ? INT64_MAX : nEarliest - 1;
			nEarliest = nTime;
			m_nRun = i;
		}
		else
			m_nRunLimit = std::min( m_nRunLimit, nTime );
	}
}

const TraceEvent *CEventSpool::NextOfRuns()
{
	if ( m_nRun == m_Runs.size() )
		return nullptr;
	Run *pRun = &m_Runs[m_nRun];
	if ( pRun->m_nRead == pRun->m_Window.size() )
	{
		if ( !FillWindow( *pRun ) )
			return nullptr;
		ChooseRun();
	}
	else if ( pRun->m_Window[pRun->m_nRead].m_nTime > m_nRunLimit )
		ChooseRun();
	if ( m_nRun == m_Runs.size() )
		return nullptr;
	pRun = &m_Runs[m_nRun];
	return &pRun->m_Window[pRun->m_nRead++];
}
} // namespace convert
