#include "keel0/platform.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <string>

#include "keel0/mathlib.h"
#include "keel0/memalloc.h"

namespace
{
using testing::ElementsAre;

TEST( Clock, NeverGoesBackAndIsAboveZero )
{
	double flBefore = Plat_FloatTime();
	EXPECT_GT( flBefore, 0.0 );
	for ( int i = 0; i < 1000; i++ )
	{
		const double flNow = Plat_FloatTime();
		ASSERT_GE( flNow, flBefore );
		flBefore = flNow;
	}
}

TEST( Clock, ComesFromTheSourceThatWasSetUntilItIsTakenBack )
{
	Plat_SetFloatTimeSource( [] { return 12.5; } );
	EXPECT_EQ( Plat_FloatTime(), 12.5 );
	Plat_SetFloatTimeSource( [] { return 0.25; } );
	EXPECT_EQ( Plat_FloatTime(), 0.25 );
	Plat_SetFloatTimeSource( nullptr );
	const double flReal = Plat_FloatTime();
	EXPECT_NE( flReal, 0.25 );
	EXPECT_GE( Plat_FloatTime(), flReal );
}

TEST( Ticks, NeverGoBack )
{
	uint64_t nBefore = Plat_CPUTicks();
	for ( int i = 0; i < 1000; i++ )
	{
		const uint64_t nNow = Plat_CPUTicks();
		ASSERT_GE( nNow, nBefore );
		nBefore = nNow;
	}
}

TEST( Ticks, HaveOneFrequencyForGood )
{
	const uint64_t nFrequency = Plat_CPUTickFrequency();
	EXPECT_GT( nFrequency, 0u );
	EXPECT_EQ( Plat_CPUTickFrequency(), nFrequency );
}

TEST( Ticks, MeasureTheSameTimeAsTheClock )
{
	// Ticks are read between two readings of the clock, so the bounds hold however long a reading is held up.
	const double flBegin = Plat_FloatTime();
	const uint64_t nFirst = Plat_CPUTicks();
	const double flBegun = Plat_FloatTime();
	while ( Plat_FloatTime() - flBegun < 0.05 )
		;
	const double flEnd = Plat_FloatTime();
	const uint64_t nLast = Plat_CPUTicks();
	const double flEnded = Plat_FloatTime();
	const double flSeconds = static_cast<double>( nLast - nFirst ) / static_cast<double>( Plat_CPUTickFrequency() );
	EXPECT_GE( flSeconds, ( flEnd - flBegun ) * 0.999 );
	EXPECT_LE( flSeconds, ( flEnded - flBegin ) * 1.001 );
}

TEST( Clipboard, TextGoesToTheSinkWhileThereIsOne )
{
	static std::vector<std::string> s_Texts;
	s_Texts.clear();
	Plat_SetClipboardText( "lost" );
	Plat_SetClipboardSink( []( const char *pText ) { s_Texts.emplace_back( pText ); } );
	Plat_SetClipboardText( "f\xC3\xBCnf" );
	Plat_SetClipboardText( nullptr );
	Plat_SetClipboardSink( nullptr );
	Plat_SetClipboardText( "lost too" );
	EXPECT_THAT( s_Texts, ElementsAre( "f\xC3\xBCnf", "" ) );
}

TEST( FatalErrorDeathTest, PrintsItsTextAndAborts )
{
	EXPECT_EXIT( Plat_FatalErrorFunc( "no %s after %d rounds\n", "module", 999 ), testing::KilledBySignal( SIGABRT ),
		"no module after 999 rounds" );
}

std::string g_FatalText;

void KeepFatalText( const char *pFormat, ... )
{
	g_FatalText = pFormat;
}

TEST( FatalError, CanBeReplaced )
{
	void ( *pBefore )( const char *, ... ) = Plat_FatalErrorFunc;
	Plat_FatalErrorFunc = KeepFatalText;
	Plat_FatalErrorFunc( "stop" );
	Plat_FatalErrorFunc = pBefore;
	EXPECT_EQ( g_FatalText, "stop" );
}

TEST( Allocator, GivesAlignedBlocksThatHoldWhatWasAskedFor )
{
	for ( const size_t nBytes : { size_t{ 1 }, size_t{ 12 }, size_t{ 4097 }, size_t{ 1 } << 20 } )
	{
		void *pBlock = g_pMemAlloc->Alloc( nBytes );
		ASSERT_NE( pBlock, nullptr );
		EXPECT_EQ( reinterpret_cast<uintptr_t>( pBlock ) % alignof( std::max_align_t ), 0u );
		std::memset( pBlock, 0xA5, nBytes );
		EXPECT_EQ( static_cast<unsigned char *>( pBlock )[nBytes - 1], 0xA5 );
		g_pMemAlloc->Free( pBlock );
	}
}

TEST( Allocator, GivesABlockOfNoBytesAndTakesBackNull )
{
	void *pBlock = g_pMemAlloc->Alloc( 0 );
	EXPECT_NE( pBlock, nullptr );
	g_pMemAlloc->Free( pBlock );
	g_pMemAlloc->Free( nullptr );
}

// A sanitizer's allocator ends the process by itself.
constexpr const char *OUT_OF_MEMORY = "out of memory: a block of [0-9]+ bytes|allocation-size-too-big|out of memory";

TEST( AllocatorDeathTest, EndsTheProcessWhenThereIsNoMemory )
{
	EXPECT_DEATH( g_pMemAlloc->Alloc( SIZE_MAX - 4096 ), OUT_OF_MEMORY );
}

void PrintAndGoOn( const char *, ... )
{
	std::fputs( "out of memory, and going on", stderr );
}

TEST( AllocatorDeathTest, EndsTheProcessAlsoWhenTheFatalErrorFunctionReturns )
{
	EXPECT_DEATH(
		{
			Plat_FatalErrorFunc = PrintAndGoOn;
			g_pMemAlloc->Alloc( SIZE_MAX - 4096 );
		},
		OUT_OF_MEMORY );
}

TEST( Mathlib, ExponentialsAreRight )
{
	EXPECT_EQ( V_expd( 0.0 ), 1.0 );
	EXPECT_DOUBLE_EQ( V_expd( 1.0 ), 2.718281828459045235 );
	EXPECT_DOUBLE_EQ( V_expd( -2.0 ) * V_expd( 2.0 ), 1.0 );
	EXPECT_EQ( V_expf( 0.0f ), 1.0f );
	EXPECT_FLOAT_EQ( V_expf( 1.0f ), 2.7182818f );
	EXPECT_TRUE( std::isinf( V_expf( 100.0f ) ) ); // in double precision it would be finite
}

TEST( Mathlib, LogarithmsAreRight )
{
	EXPECT_EQ( V_log2f( 1.0f ), 0.0f );
	EXPECT_EQ( V_log2f( 1024.0f ), 10.0f );
	EXPECT_FLOAT_EQ( V_log2f( 10.0f ), 3.3219281f );
	EXPECT_EQ( V_log10d( 1.0 ), 0.0 );
	EXPECT_DOUBLE_EQ( V_log10d( 1000.0 ), 3.0 );
	EXPECT_EQ( V_log2f( 0.0f ), -INFINITY );
	EXPECT_EQ( V_log10d( 0.0 ), -INFINITY );
	EXPECT_TRUE( std::isnan( V_log2f( -1.0f ) ) );
	EXPECT_TRUE( std::isnan( V_log10d( -1.0 ) ) );
}
} // namespace
