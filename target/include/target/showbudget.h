// Show Budget for engines: says where the time of a frame goes, to a console that connects while the engine runs.
//
//     #include "target/showbudget.h"
//
//     SHOWBUDGET_BUDGET( g_Physics, "Physics", 230, 120, 40 );      // once, at namespace scope
//
//     void StepWorld()
//     {
//         SHOWBUDGET_SCOPE( g_Physics, "StepWorld" );               // from here to the end of the block
//     }
//
//     int main()
//     {
//         showbudget::Start( {} );                                  // 127.0.0.1:27190
//         while ( Running() )
//         {
//             Tick();
//             showbudget::EndFrame();                               // on the same thread every time
//         }
//         showbudget::Stop();
//     }
//
// A budget's value of a frame is wall time of the frame thread: the thread that calls EndFrame(). Every moment of a
// frame belongs to exactly one budget, that of the innermost open scope, or to "Other" where no scope is open; so the
// values of a frame add up to its length. Scopes on other threads count for the mini-profiler only, which shows calls
// and inclusive time of every scope summed over all threads.
//
// A scope costs two reads of the processor's time-stamp counter while somebody watches, and one load and a branch while
// nobody does. It never blocks, never allocates and takes no lock; nor does EndFrame().
//
// C++17; no exceptions and no run-time type information needed. docs/target.md is the guide.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#if defined( __x86_64__ )
#include <x86intrin.h>
#endif

// The component that call sites of this file or build target belong to, for grouping. Define it before including.
#ifndef SHOWBUDGET_PROJECT
#define SHOWBUDGET_PROJECT ""
#endif

// An engine whose modules share one copy of this library needs its symbols visible.
#define SHOWBUDGET_API __attribute__( ( visibility( "default" ) ) )

// ThreadSanitizer has to see every access to a counter.
#if defined( __SANITIZE_THREAD__ )
#define SHOWBUDGET_PLAIN_COUNTERS 0
#elif defined( __has_feature )
#if __has_feature( thread_sanitizer )
#define SHOWBUDGET_PLAIN_COUNTERS 0
#endif
#endif
#if !defined( SHOWBUDGET_PLAIN_COUNTERS ) && defined( __x86_64__ )
#define SHOWBUDGET_PLAIN_COUNTERS 1
#endif

namespace showbudget
{
enum class Severity : uint32_t
{
	Message = 0,
	Warning = 1,
	Error = 2
};

// What a frame means for an engine that simulates in fixed steps and renders several frames for each.
enum class Tick : uint32_t
{
	New,      // the frame opens a tick; right for every frame of an engine without fixed steps
	Continued // the frame belongs to the tick of the frame before it
};

enum class Clock
{
	Best,  // the time-stamp counter where it runs at one speed on all cores, else the system's clock
	System // the system's clock in any case; a scope then costs about five times as much
};

// The library's own messages (a port that is taken, a console that came or left, a recording that ended): one line
// without a line feed. Called on the threads of Start() and StartRecording() and on the library's own, one line at a
// time; not any more once Stop() returned, or Start() returned false.
using LogFunction = void ( * )( Severity severity, const char *pLine, void *pContext );

struct Settings
{
	const char *m_pName = "engine"; // shown by the console; UTF-8, at most 255 bytes are sent
	// Numeric. Whoever can reach any other address can watch the engine, and command it if that is on.
	const char *m_pAddress = "127.0.0.1";
	uint16_t m_nPort = 27190;     // 0 takes any free one: see Port()
	LogFunction m_pLog = nullptr; // null writes to stderr
	void *m_pLogContext = nullptr;
	Clock m_Clock = Clock::Best; // counts in the first Start() of the process only
	// Consoles must know this word, of at most 255 bytes, to be let in. Null or empty takes the environment variable
	// SHOWBUDGET_TOKEN, or the first line of the file that SHOWBUDGET_TOKEN_FILE names; where neither is there, whoever
	// reaches the port is let in. docs/target.md tells what a token does not protect against.
	const char *m_pToken = nullptr;
	bool m_bCommands = false; // consoles may call the commands that the engine registers
};

// Begins to listen, on a thread of its own. False when that failed, for example because the port is taken or the token
// cannot be read: one line is logged and everything else keeps working without anybody watching. The texts are copied.
// Start() and Stop() are called by one thread at a time.
SHOWBUDGET_API bool Start( const Settings &settings );

// Ends all connections, the recording and the library's threads. Allowed at any time, also while other threads are
// inside scopes or EndFrame(), and when nothing was started.
SHOWBUDGET_API void Stop();

// The port that is listened on, 0 while none is.
SHOWBUDGET_API uint16_t Port();

// Ends the frame: everything since the last call belongs to it. Never blocks; when a console reads too slowly, whole
// frames are dropped for that console, and it is told how many. Console commands run here, after the frame was taken.
// Scopes may be open; their time is split at this moment. Another thread may take over the frames, but two threads must
// not be in this function at the same time.
SHOWBUDGET_API void EndFrame( Tick tick = Tick::New );

// Sends a line of text to every connected console; nothing happens while none is. Callable from any thread, never
// blocks. At most 2,000 bytes are kept. When lines come faster than they can be sent, some are dropped and their number
// is sent.
SHOWBUDGET_API void Print( Severity severity, const char *pText );
SHOWBUDGET_API void PrintFormat( Severity severity, const char *pFormat, ... )
	__attribute__( ( format( printf, 2, 3 ) ) );

// ppArguments[0] is the command's name. The texts live as long as the call.
using CommandFunction = void ( * )( int nArguments, const char *const *ppArguments, void *pContext );

// Lets consoles call a function of the engine, in sessions that were started with Settings::m_bCommands. The function
// runs on the frame thread, inside EndFrame(). The texts are copied; a name is one word of at most 63 bytes, the help
// one line of at most 255. False when there is no room (256 commands), the name is none or is taken; "help" is.
SHOWBUDGET_API bool RegisterCommand( const char *pName, const char *pHelp, CommandFunction pFunction, void *pContext );

// What is recorded, and how much of it.
struct RecordingSettings
{
	// The file; an existing one is overwritten, except while another recording is written to it. "%p" in it is replaced
	// by the process id.
	const char *m_pFile = nullptr;
	uint64_t m_nMaxBytes = 1000000000; // the recording ends before the file is larger; 0 = no limit
	uint64_t m_nMaxFrames = 0;         // the recording ends with that many frames in the file; 0 = no limit
	double m_flSlowerThan = 0.0;       // milliseconds, at most 1,000,000: only slower frames are kept; 0 = all
	uint32_t m_nFramesAround = 0;      // before and after each slower frame that are kept, too; at most 1,000
	bool m_bOtherThreads = false;      // what threads other than the frame thread do is recorded, too
};

// Begins to record frames to a file, from the end of the current one on, whether or not the library was started or
// anybody is connected. Written are the scopes of the frame thread as a tree, each path of scopes being a node, with
// calls and inclusive times of every frame. A thread of the library appends each frame as a whole, so a process that is
// killed leaves a file whose frames can be read. When the file cannot be written fast enough, frames are left out and
// counted.
//
// False when the file cannot be opened or a recording is running already; that, and everything that ends a recording
// early, is one line in the log and on the consoles. The engine runs on in any case. Any thread.
//
// The first Start() of the process does this by itself when the environment variable SHOWBUDGET_RECORD holds a file,
// with the options of SHOWBUDGET_RECORD_OPTIONS; see docs/target.md.
SHOWBUDGET_API bool StartRecording( const RecordingSettings &settings );

// Ends the recording and waits until its file is complete: as long as the disk takes, but at most three seconds. Stop()
// does it, too. Nothing happens when there is no recording.
SHOWBUDGET_API void StopRecording();

struct RecordingState
{
	bool m_bRunning = false;
	uint64_t m_nFrames = 0;  // in the file
	uint64_t m_nBytes = 0;   // of the file
	uint64_t m_nDropped = 0; // frames that could not be written
};
// Of the recording that is running, or of the last one.
SHOWBUDGET_API RecordingState GetRecordingState();

// Lets consoles start and stop recordings, by the command "record", where commands are on. They can only make new
// files, and only in that folder. False as for RegisterCommand; the first call counts.
SHOWBUDGET_API bool RegisterRecordCommand( const char *pFolder );

// A budget: a name and a colour. Made once, at namespace scope, by SHOWBUDGET_BUDGET. Two budgets of one name are one;
// the first colour counts. The name is copied; more than 63 bytes are cut. There is room for 255; more become "Other".
class CBudget
{
public:
	SHOWBUDGET_API CBudget( const char *pName, uint8_t nRed, uint8_t nGreen, uint8_t nBlue );
	CBudget( const CBudget & ) = delete;
	CBudget &operator=( const CBudget & ) = delete;

	uint32_t Index() const { return m_nIndex; } // 0, which is "Other", before it was made

private:
	uint32_t m_nIndex;
};

// What follows is what the macros at the end expand to. Engines do not use it directly.
namespace detail
{
constexpr uintptr_t NOT_YET = ~uintptr_t( 0 );

// A call site: what is known about it at compile time, and the place of its counters once it ran.
struct CSite
{
	constexpr CSite( const char *pName, const char *pFunction, const char *pFile, uint32_t nLine,
		const CBudget *pBudget, const char *pProject )
		: m_pName( pName )
		, m_pFunction( pFunction )
		, m_pFile( pFile )
		, m_pProject( pProject )
		, m_pBudget( pBudget )
		, m_nLine( nLine )
	{
	}

	// Bytes from the start of any thread's counters to this site's; NOT_YET until the site ran for the first time.
	std::atomic<uintptr_t> m_nOffset{ NOT_YET };
	const char *m_pName;
	const char *m_pFunction; // as the compiler spells it, with its return type and parameters
	const char *m_pFile;
	const char *m_pProject;
	const CBudget *m_pBudget;
	uint32_t m_nLine;
};

// What one thread counts at one site, ever growing. The thread alone writes; the frame thread reads what is atomic.
struct alignas( 64 ) CSiteCounters
{
	std::atomic<uint64_t> m_nTicks; // inclusive
	std::atomic<uint64_t> m_nCalls;
	// This thread's counters of the scope around the last entry; null before the first one.
	std::atomic<CSiteCounters *> m_pCaller;
	uint64_t m_nBegin;       // when the last entry was
	uint64_t m_nTicksGiven;  // the part of m_nTicks that its callers' m_nChildTicks have got
	uint64_t m_nChildTicks;  // the ticks of scopes inside
	uint64_t m_nTicksBefore; // the frame thread's: the values at the end of the last frame
	uint64_t m_nCallsBefore;
};
static_assert( sizeof( CSiteCounters ) == 64, "one cache line" );

struct CThread
{
	uintptr_t m_nCounters;     // address of this thread's counters; NOT_YET before its first scope
	CSiteCounters *m_pCurrent; // the innermost open scope, or the counters with offset 0
};

// A scope reaches its thread with one instruction instead of a call. In a program that is the cheapest one; the code of
// a shared library needs one more. Define SHOWBUDGET_SHARED in a program whose shared libraries hold this library.
#if defined( SHOWBUDGET_SHARED ) || ( defined( __PIC__ ) && !defined( __PIE__ ) )
#define SHOWBUDGET_THREAD_LOCAL __attribute__( ( tls_model( "initial-exec" ) ) )
#else
#define SHOWBUDGET_THREAD_LOCAL __attribute__( ( tls_model( "local-exec" ) ) )
#endif
extern SHOWBUDGET_API __thread CThread t_Thread SHOWBUDGET_THREAD_LOCAL;

// What somebody wants to see; 0 while nobody watches.
extern SHOWBUDGET_API std::atomic<uint32_t> g_nWanted;

// What an open scope holds: the address of its counters, the same negative for one that must leave slowly, or 0 for one
// that is not measured.
using OpenScope = intptr_t;

// The ways off the straight path: a thread's or a site's first time, a site that is entered from another scope than
// before or that is open already, and a machine whose time-stamp counter is no clock.
SHOWBUDGET_API OpenScope EnterSlowly( CSite &site ) noexcept;
SHOWBUDGET_API void LeaveSlowly( OpenScope nOpen ) noexcept;

inline uint64_t ReadCounter()
{
#if defined( __x86_64__ )
	return __rdtsc();
#else
	return 0; // never reached: EnterSlowly takes every scope
#endif
}

// Adds to a counter that only the calling thread writes: one instruction without a lock, where the compilers would make
// three of a relaxed load and store.
inline __attribute__( ( always_inline ) ) void AddOwned( std::atomic<uint64_t> &counter, uint64_t nValue )
{
#if SHOWBUDGET_PLAIN_COUNTERS
	static_assert( sizeof( counter ) == sizeof( uint64_t ), "an atomic word is a plain word" );
	__asm__( "addq %1, %0" : "+m"( reinterpret_cast<uint64_t &>( counter ) ) : "er"( nValue ) : "cc" );
#else
	counter.store( counter.load( std::memory_order_relaxed ) + nValue, std::memory_order_relaxed );
#endif
}

// The scope of a macro. It must end on the thread that it began on, and by leaving its block. A scope that is entered
// again while it is open on the same thread only counts a call, since its time is already in the outer one's.
//
// Everything here overlaps with the reads of the counter, and every instruction counts: bench/target has the figures.
// The way of a watched scope is laid out straight, since an unwatched one is well below its limit either way.
class CScope
{
public:
	explicit __attribute__( ( always_inline ) ) CScope( CSite &site ) noexcept
		: m_nOpen( __builtin_expect( g_nWanted.load( std::memory_order_relaxed ) != 0, 1 ) ? Enter( site ) : 0 )
	{
	}
	__attribute__( ( always_inline ) ) ~CScope()
	{
		if ( __builtin_expect( m_nOpen > 0, 1 ) )
			Leave( reinterpret_cast<CSiteCounters *>( m_nOpen ) );
		else if ( m_nOpen != 0 )
			LeaveSlowly( m_nOpen );
	}
	CScope( const CScope & ) = delete;
	CScope &operator=( const CScope & ) = delete;

private:
	static __attribute__( ( always_inline ) ) OpenScope Enter( CSite &site ) noexcept
	{
		// NOT_YET plus anything but 0 overflows, so the carry of one addition tells both first times.
		uintptr_t nAddress = 0;
		if ( __builtin_expect( __builtin_add_overflow(
								   site.m_nOffset.load( std::memory_order_relaxed ), t_Thread.m_nCounters, &nAddress ),
				 0 ) )
			return EnterSlowly( site );
		auto *pCounters = reinterpret_cast<CSiteCounters *>( nAddress );
		// The caller of an open scope is not the innermost one, so this also tells that the scope is entered again.
		if ( __builtin_expect( pCounters->m_pCaller.load( std::memory_order_relaxed ) != t_Thread.m_pCurrent, 0 ) )
			return EnterSlowly( site );
		AddOwned( pCounters->m_nCalls, 1 );
		t_Thread.m_pCurrent = pCounters;
		pCounters->m_nBegin = ReadCounter();
		return reinterpret_cast<OpenScope>( pCounters );
	}
	static __attribute__( ( always_inline ) ) void Leave( CSiteCounters *pCounters ) noexcept
	{
		AddOwned( pCounters->m_nTicks, ReadCounter() - pCounters->m_nBegin );
		t_Thread.m_pCurrent = pCounters->m_pCaller.load( std::memory_order_relaxed );
	}

	const OpenScope m_nOpen;
};
} // namespace detail
} // namespace showbudget

#define SHOWBUDGET_JOIN_( a, b ) a##b
#define SHOWBUDGET_JOIN( a, b ) SHOWBUDGET_JOIN_( a, b )

// Defines a budget at namespace scope. SHOWBUDGET_DECLARE_BUDGET names one that another file defines.
#define SHOWBUDGET_BUDGET( variable, name, red, green, blue ) ::showbudget::CBudget variable( name, red, green, blue )
#define SHOWBUDGET_DECLARE_BUDGET( variable ) extern ::showbudget::CBudget variable

// Measures from here to the end of the block. The name is a literal.
#define SHOWBUDGET_SCOPE( budget, name ) SHOWBUDGET_SCOPE_OF_( budget, "" name "" )
// The same under the name of the function.
#define SHOWBUDGET_FUNCTION( budget ) SHOWBUDGET_SCOPE_OF_( budget, __func__ )

#define SHOWBUDGET_SCOPE_OF_( budget, name )                                                                           \
	static ::showbudget::detail::CSite SHOWBUDGET_JOIN( showBudgetSite, __LINE__ )(                                    \
		name, __PRETTY_FUNCTION__, __FILE__, __LINE__, &( budget ), SHOWBUDGET_PROJECT );                              \
	const ::showbudget::detail::CScope SHOWBUDGET_JOIN( showBudgetScope, __LINE__ )(                                   \
		SHOWBUDGET_JOIN( showBudgetSite, __LINE__ ) )
