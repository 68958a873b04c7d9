#include "views/layoutsettings.h"

#include <gmock/gmock.h>

#include "keel0/keyvalues.h"
#include "support/logguard.h"
#include "support/randomseed.h"

using testing::ElementsAre;
using testing::StrEq;

namespace
{
const QByteArray LAYOUT( "\0\xFF layout \n of bytes", 20 );

bool IsTheLayout( const QByteArray &bytes )
{
	return bytes == LAYOUT;
}

QByteArray Read( KeyValues &settings, const char *pKey = "place" )
{
	return ReadLayout( settings, pKey, &IsTheLayout );
}

// Reads twice: what does not hold is told of once and gone then, with its check value.
void ExpectDroppedOnce( KeyValues &settings )
{
	CExpectWarnings warnings;
	EXPECT_EQ( Read( settings ), QByteArray() );
	EXPECT_THAT( warnings.Take(),
		ElementsAre( StrEq( "The setting \"place\" is damaged and left out: the layout stays as it is\n" ) ) );
	EXPECT_EQ( Read( settings ), QByteArray() );
	EXPECT_EQ( settings.GetCount(), 0 );
}
} // namespace

TEST( LayoutSettings, ComeBackAsTheyWereWritten )
{
	for ( const QByteArray &layout : { LAYOUT, QByteArray( "x" ), QByteArray( 10000, '\0' ) } )
	{
		KeyValues settings( "Settings" );
		WriteLayout( settings, "place", layout );
		EXPECT_STREQ( settings.GetString( "place" ), layout.toBase64().constData() );
		EXPECT_STRNE( settings.GetString( "place_check" ), "" );
		EXPECT_EQ( Read( settings ), layout ) << "a check value that is right stands for the format";
		EXPECT_EQ( settings.GetCount(), 2 );
	}
}

TEST( LayoutSettings, AreEmptyWithoutAWarningWhereThereAreNone )
{
	KeyValues settings( "Settings" );
	EXPECT_EQ( Read( settings ), QByteArray() );
	settings.SetString( "place", "" );
	EXPECT_EQ( Read( settings ), QByteArray() );
	settings.SetString( "place_check", "1234" );
	EXPECT_EQ( Read( settings ), QByteArray() );
}

TEST( LayoutSettings, WithoutACheckValueMustBeTheBase64OfALayout )
{
	KeyValues settings( "Settings" );
	settings.SetString( "place", LAYOUT.toBase64() );
	EXPECT_EQ( Read( settings ), LAYOUT );
	const QByteArray texts[] = { "no base64!", LAYOUT.toBase64() + "\n", " " + LAYOUT.toBase64(),
		LAYOUT.toBase64( QByteArray::OmitTrailingEquals ), LAYOUT.toBase64().chopped( 4 ), LAYOUT.toBase64() + "AAAA",
		QByteArray( "another" ).toBase64() };
	for ( const QByteArray &text : texts )
	{
		SCOPED_TRACE( text.constData() );
		settings.SetString( "place", text );
		ExpectDroppedOnce( settings );
	}
}

TEST( LayoutSettings, DoNotHoldWithTheCheckValueOfAnotherTextOrKey )
{
	KeyValues settings( "Settings" );
	WriteLayout( settings, "place", "another" );
	settings.SetString( "place", LAYOUT.toBase64() );
	ExpectDroppedOnce( settings );

	KeyValues others( "Settings" );
	WriteLayout( others, "other place", LAYOUT );
	settings.SetString( "place", others.GetString( "other place" ) );
	settings.SetString( "place_check", others.GetString( "other place_check" ) );
	ExpectDroppedOnce( settings );
}

TEST( LayoutSettings, DoNotHoldWithAnyByteOfTextOrCheckValueChanged )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( int i = 0; i < 2000 && !testing::Test::HasFailure(); i++ )
	{
		KeyValues settings( "Settings" );
		WriteLayout( settings, "place", LAYOUT );
		const char *pKey = random() % 2 ? "place" : "place_check";
		QByteArray text = settings.GetString( pKey );
		const int nPlace = static_cast<int>( random() % static_cast<unsigned>( text.size() ) );
		text[nPlace] = static_cast<char>( text[nPlace] ^ ( 1 << random() % 7 ) );
		if ( text[nPlace] == '\0' )
			text.truncate( nPlace );
		if ( text.isEmpty() )
			continue; // no text or no check value, which is another matter
		settings.SetString( pKey, text );
		ExpectDroppedOnce( settings );
	}
}
