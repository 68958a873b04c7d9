#include "views/fixeddecimals.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdio>

#include "support/randomseed.h"

namespace
{
std::string Printed( float flValue, int nWidth, int nDecimals )
{
	char text[64];
	std::snprintf( text, sizeof( text ), "%*.*f", nWidth, nDecimals, double{ flValue } );
	return text;
}

std::string Appended( float flValue, int nWidth, int nDecimals )
{
	std::string text;
	AppendDecimals( text, flValue, nWidth, nDecimals );
	return text;
}
} // namespace

TEST( FixedDecimals, PadOnTheLeftAndNeverCut )
{
	EXPECT_EQ( Appended( 0.0f, 5, 2 ), " 0.00" );
	EXPECT_EQ( Appended( 12.5f, 6, 3 ), "12.500" );
	EXPECT_EQ( Appended( 123456.0f, 6, 3 ), "123456.000" );
}

TEST( FixedDecimals, RoundTiesToEvenAndNothingElse )
{
	EXPECT_EQ( Appended( 0.125f, 0, 2 ), "0.12" );
	EXPECT_EQ( Appended( 0.375f, 0, 2 ), "0.38" );
	EXPECT_EQ( Appended( 0.0625f, 0, 3 ), "0.062" );
	EXPECT_EQ( Appended( 0.999f, 0, 2 ), "1.00" );
}

TEST( FixedDecimals, AreWhatPrintfWritesForAnyFloat )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int i = 0; i < 100'000; i++ )
	{
		const float flAny = std::bit_cast<float>( static_cast<uint32_t>( random() ) & 0x7fffffff );
		const float flValue = flAny < 1e7f ? flAny : static_cast<float>( random() ) * 0.001f; // no NaN, nothing huge
		for ( const int nDecimals : { 1, 2, 3 } )
			ASSERT_EQ( Appended( flValue, 6, nDecimals ), Printed( flValue, 6, nDecimals ) );
	}
}
