#include "recorder.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <thread>
#include <utility>

#include "clock.h"
#include "engine.h"
#include "log.h"
#include "registry.h"
#include "thread.h"

namespace showbudget
{
namespace
{
using SteadyClock = std::chrono::steady_clock;

// How often frames are fetched. The frame thread wakes nobody.
constexpr auto FRAME_PAUSE = std::chrono::milliseconds( 4 );
// How long a pipe or a device that takes nothing holds up the end of a recording.
constexpr auto GIVE_UP_TIME = std::chrono::seconds( 1 );
// How long StopRecording() waits for a disk that hangs.
constexpr auto END_TIME = std::chrono::seconds( 3 );

std::string Quoted( const std::string &text )
{
	return '"' + text + '"';
}

std::string Counted( uint64_t nCount, const char *pNoun )
{
	return std::to_string( nCount ) + ' ' + pNoun + ( nCount == 1 ? "" : "s" );
}

std::string SizeText( uint64_t nBytes )
{
	constexpr uint64_t MEGABYTE = 1000000;
	char text[32];
	std::snprintf( text, sizeof( text ), nBytes < MEGABYTE ? "%.1f KB" : "%.1f MB",
		static_cast<double>( nBytes ) * ( nBytes < MEGABYTE ? 1.0e-3 : 1.0e-6 ) );
	return text;
}

// "%p" is the process id, so that processes that inherit one environment do not meet in one file.
std::string ReplaceProcessId( std::string path )
{
	const std::string id = std::to_string( getpid() );
	for ( size_t n = path.find( "%p" ); n != std::string::npos; n = path.find( "%p", n + id.size() ) )
		path.replace( n, 2, id );
	return path;
}

RecordedNode DescribeNode( uint32_t nNode )
{
	const RecordNode &node = g_Engine.m_RecordTree.Node( nNode );
	if ( nNode == NODE_FRAME )
		return { NODE_FRAME, "Frame", 0 };
	if ( node.m_nSite == SITE_OTHER_THREADS )
		return { node.m_nParent, "Other threads", 0 };
	const Site &site = GetSite( node.m_nSite );
	if ( !site.m_bReady.load( std::memory_order_acquire ) )
		return { node.m_nParent, "(more scopes)", 0 };
	const Budget &budget = GetBudget( site.m_nBudget );
	return { node.m_nParent, site.m_Name,
		uint32_t{ budget.m_nRed } << 16 | uint32_t{ budget.m_nGreen } << 8 | uint32_t{ budget.m_nBlue } };
}

std::mutex g_RecordingMutex; // of the two below; never held while anything is waited for
std::shared_ptr<CRecording> g_pRecording;
uint32_t g_nSessions = 0;

std::shared_ptr<CRecording> CurrentRecording()
{
	std::lock_guard lock( g_RecordingMutex );
	return g_pRecording;
}
} // namespace

CRecording::CRecording( RecordingOptions options, uint32_t nSession )
	: m_Options( std::move( options ) )
	, m_nSession( nSession )
{
}

bool CRecording::Open()
{
	std::string error;
	m_bOpen = m_File.Open( m_Options.m_Path, m_Options.m_bNewFile, error );
	if ( m_bOpen )
		BeginSession();
	else
		End( Severity::Error, "cannot record to " + Quoted( m_Options.m_Path ) + ": " + error );
	return m_bOpen;
}

// From here on, frames are measured for this recording.
void CRecording::BeginSession()
{
	g_Engine.m_RecordTree.BeginSession( m_nSession, m_Options.m_bOtherThreads );
	const std::lock_guard lock( m_Mutex );
	if ( !m_bEnd.load( std::memory_order_relaxed ) )
		detail::g_nWanted.fetch_or( WANT_RECORDING );
}

void CRecording::Start()
{
	// Until it has ended, the thread may be stuck in a write that no one can end, so nobody joins it.
	std::thread thread = StartThread( [pSelf = shared_from_this()] { pSelf->Run(); } );
	if ( thread.joinable() )
		thread.detach();
	else
		End( Severity::Error, "cannot record" );
}

void CRecording::RequestEnd()
{
	const std::lock_guard lock( m_Mutex );
	if ( m_bEnd.load( std::memory_order_relaxed ) )
		return;
	if ( !IsEnded() )
		detail::g_nWanted.fetch_and( ~WANT_RECORDING );
	m_nGiveUpTime.store( ( SteadyClock::now() + GIVE_UP_TIME ).time_since_epoch().count(), std::memory_order_relaxed );
	m_bEnd.store( true, std::memory_order_release );
	m_Changed.notify_all();
}

void CRecording::WaitUntilEnded()
{
	std::unique_lock lock( m_Mutex );
	if ( !m_Changed.wait_for( lock, END_TIME, [this] { return IsEnded(); } ) )
		LogLine( Severity::Error, "the disk hangs; the end of " + Quoted( m_Options.m_Path ) + " may be missing" );
}

RecordingState CRecording::State() const
{
	const uint64_t nLost =
		IsEnded() ? m_nLost.load( std::memory_order_relaxed ) : g_Engine.m_RecordTree.FramesLost( m_nSession );
	return { !IsEnded(), m_nFrames.load( std::memory_order_relaxed ), m_nBytes.load( std::memory_order_relaxed ),
		nLost + m_nUnwritten.load( std::memory_order_relaxed ) };
}

void CRecording::Run()
{
	try
	{
		if ( !m_bOpen && !Open() )
			return;
		WriteFrames();
		RequestEnd();
		TakeTheRest();
	}
	catch ( const std::exception &failure )
	{
		// Out of memory, most likely. The engine goes on without us.
		m_EndSeverity = Severity::Error;
		m_EndReason = std::string( ": " ) + failure.what();
		RequestEnd();
	}
	CountUntaken();
	const uint64_t nFrames = m_nFrames.load( std::memory_order_relaxed );
	const RecordingState state = State();
	m_File.Close();
	std::string line = "the recording " + Quoted( m_Options.m_Path ) + " ended" + m_EndReason + ": " +
					   Counted( nFrames, "frame" ) + ", " + SizeText( state.m_nBytes );
	if ( state.m_nDropped > 0 )
		line +=
			"; " + Counted( state.m_nDropped, "frame" ) + ( state.m_nDropped == 1 ? " was" : " were" ) + " not written";
	End( state.m_nDropped > 0 ? std::max( m_EndSeverity, Severity::Warning ) : m_EndSeverity, line );
}

void CRecording::WriteFrames()
{
	Report( Severity::Message, "recording to " + Quoted( m_Options.m_Path ) );
	const uint64_t nFrequency = TickFrequency();
	m_pEncoder = std::make_unique<CRecordingEncoder>( nFrequency, DescribeNode );
	m_pEncoder->AddString( "process", static_cast<uint32_t>( getpid() ) );
	m_pFilter = std::make_unique<CFrameFilter>(
		static_cast<uint64_t>( m_Options.m_flSlowerThan * 1.0e-3 * static_cast<double>( nFrequency ) ),
		m_Options.m_nAround );
	CRecordingEncoder::AppendFileHeader( m_Bytes );
	if ( !Append( m_Bytes ) )
		return;
	while ( m_EndReason.empty() )
	{
		// Looked at first, so that everything that was there before the end is written.
		const bool bEnd = m_bEnd.load( std::memory_order_acquire );
		WriteQueued();
		if ( bEnd )
			return;
		std::unique_lock lock( m_Mutex );
		m_Changed.wait_for( lock, FRAME_PAUSE, [this] { return m_bEnd.load( std::memory_order_relaxed ); } );
	}
}

void CRecording::WriteQueued()
{
	CRecordTree &tree = g_Engine.m_RecordTree;
	while ( const uint8_t *pBytes = tree.Queue().Peek() )
	{
		NoteLostFrames();
		TakeFrame( pBytes );
		tree.Queue().Pop();
		if ( !m_EndReason.empty() )
			return;
	}
	if ( tree.AnyNodeLost() && !std::exchange( m_bWarnedOfNodes, true ) )
		Report( Severity::Warning,
			"more than " + std::to_string( MAX_RECORD_NODES - 1 ) + " paths of scopes: the rest is not recorded" );
}

void CRecording::TakeFrame( const uint8_t *pBytes )
{
	const auto &header = *reinterpret_cast<const RecordFrameHeader *>( pBytes );
	if ( header.m_nSession != m_nSession )
		return;
	const auto *pEntries = reinterpret_cast<const RecordEntry *>( pBytes + sizeof( header ) );
	RecordedFrame frame = m_pFilter->TakeEmpty();
	frame.m_nBegin = header.m_nBegin;
	frame.m_nFrame = header.m_nFrame;
	frame.m_Entries.assign( pEntries, pEntries + header.m_nEntries );
	m_pFilter->Add( std::move( frame ), [this]( const RecordedFrame &kept ) { KeepFrame( kept ); } );
}

// Frames behind a limit were not asked for; those behind an error were.
void CRecording::KeepFrame( const RecordedFrame &frame )
{
	if ( m_EndReason.empty() )
		WriteFrame( frame );
	if ( m_EndSeverity == Severity::Error )
		m_nUnwritten.fetch_add( 1, std::memory_order_relaxed );
}

void CRecording::WriteFrame( const RecordedFrame &frame )
{
	m_Bytes.clear();
	m_pEncoder->AppendFrame( m_Bytes, frame );
	if ( m_Options.m_nMaxBytes != 0 && m_File.Size() + m_Bytes.size() > m_Options.m_nMaxBytes )
	{
		m_EndReason = " at its limit of " + SizeText( m_Options.m_nMaxBytes );
		return;
	}
	if ( !Append( m_Bytes ) )
		return;
	const uint64_t nFrames = m_nFrames.fetch_add( 1, std::memory_order_relaxed ) + 1;
	if ( nFrames == m_Options.m_nMaxFrames )
		m_EndReason = " at its limit of " + Counted( nFrames, "frame" );
}

bool CRecording::Append( const Bytes &bytes )
{
	std::string error;
	const auto giveUp = [this]
	{
		NoteLostFrames(); // while a pipe takes nothing
		return IsGivenUp();
	};
	const bool bWritten = m_File.Append( bytes, giveUp, error );
	m_nBytes.store( m_File.Size(), std::memory_order_relaxed );
	if ( bWritten )
		return true;
	m_EndSeverity = Severity::Error;
	m_EndReason = error.empty() ? ", nobody takes its bytes" : ", it cannot be written (" + error + ')';
	return false;
}

void CRecording::NoteLostFrames()
{
	const uint64_t nLost = g_Engine.m_RecordTree.FramesLost( m_nSession );
	if ( nLost == m_nLostNoted )
		return;
	if ( m_nLostNoted == 0 )
		Report( Severity::Warning,
			"frames come faster than " + Quoted( m_Options.m_Path ) + " can be written; some are left out" );
	m_nLostNoted = nLost;
	m_pEncoder->AddString( "frames left out", static_cast<uint32_t>( nLost ) );
}

// What the queue holds was measured for this recording. Where that cannot be written any more, this counts what was to
// be.
void CRecording::TakeTheRest()
{
	CByteQueue<RECORD_QUEUE_BYTES> &queue = g_Engine.m_RecordTree.Queue();
	for ( ; const uint8_t *pBytes = queue.Peek(); queue.Pop() )
		TakeFrame( pBytes );
}

// Without memory nobody can tell which frames were wanted.
void CRecording::CountUntaken()
{
	CByteQueue<RECORD_QUEUE_BYTES> &queue = g_Engine.m_RecordTree.Queue();
	uint64_t nUntaken = 0;
	for ( ; const uint8_t *pBytes = queue.Peek(); queue.Pop() )
		nUntaken += reinterpret_cast<const RecordFrameHeader *>( pBytes )->m_nSession == m_nSession;
	if ( m_EndSeverity == Severity::Error )
		m_nUnwritten.fetch_add( nUntaken, std::memory_order_relaxed );
	m_nLost.store( g_Engine.m_RecordTree.FramesLost( m_nSession ), std::memory_order_relaxed );
}

void CRecording::End( Severity severity, const std::string &reason )
{
	RequestEnd();
	Report( severity, reason );
	const std::lock_guard lock( m_Mutex );
	m_bEnded.store( true, std::memory_order_release );
	m_Changed.notify_all();
}

// In the engine's log and on every console.
void CRecording::Report( Severity severity, const std::string &line ) const
{
	LogLine( severity, line );
	Print( severity, line.c_str() );
}

bool CRecording::IsGivenUp() const
{
	return m_bEnd.load( std::memory_order_acquire ) &&
		   SteadyClock::now().time_since_epoch().count() > m_nGiveUpTime.load( std::memory_order_relaxed );
}

bool BeginRecording( RecordingOptions options, bool bWait )
{
	options.m_Path = ReplaceProcessId( options.m_Path );
	HandleForks();
	ChooseClock( Clock::Best );
	std::shared_ptr<CRecording> pRecording;
	{
		std::lock_guard lock( g_RecordingMutex );
		if ( !g_pRecording || g_pRecording->IsEnded() )
		{
			pRecording = std::make_shared<CRecording>( std::move( options ), ++g_nSessions );
			g_pRecording = pRecording;
		}
	}
	if ( !pRecording )
	{
		const std::string line = "already recording to " + Quoted( CurrentRecording()->Path() );
		LogLine( Severity::Warning, line );
		Print( Severity::Warning, line.c_str() );
		return false;
	}
	if ( bWait && !pRecording->Open() )
		return false;
	pRecording->Start();
	return true;
}

void EndRecording( bool bWait )
{
	const std::shared_ptr<CRecording> pRecording = CurrentRecording();
	if ( !pRecording )
		return;
	pRecording->RequestEnd();
	if ( bWait )
		pRecording->WaitUntilEnded();
}

void ForgetRecording()
{
	// Its locks may be held by threads that the child does not have, so it cannot be ended, only left alone.
	new ( &g_RecordingMutex ) std::mutex;
	new ( &g_pRecording ) std::shared_ptr<CRecording>;
}

RecordingState GetRecordingState()
{
	const std::shared_ptr<CRecording> pRecording = CurrentRecording();
	return pRecording ? pRecording->State() : RecordingState();
}
} // namespace showbudget
