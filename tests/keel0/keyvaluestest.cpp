#include "keel0/keyvalues.h"

#include <gmock/gmock.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>

#include "support/randomseed.h"

namespace
{
using testing::ElementsAre;

std::vector<std::string> NamesOf( const KeyValues &tree )
{
	std::vector<std::string> names;
	for ( int i = 0; i < tree.GetCount(); i++ )
		names.emplace_back( tree.GetEntry( i )->GetName() );
	return names;
}

TEST( KeyValues, GiveTheDefaultForAKeyThatIsNotThere )
{
	const KeyValues tree( "root" );
	EXPECT_STREQ( tree.GetName(), "root" );
	EXPECT_EQ( tree.GetInt( "a" ), 0 );
	EXPECT_EQ( tree.GetInt( "a", -7 ), -7 );
	EXPECT_EQ( tree.GetFloat( "a" ), 0.0f );
	EXPECT_EQ( tree.GetFloat( "a", 2.5f ), 2.5f );
	EXPECT_STREQ( tree.GetString( "a" ), "" );
	EXPECT_STREQ( tree.GetString( "a", "none" ), "none" );
	EXPECT_EQ( tree.GetString( "a", nullptr ), nullptr );
	EXPECT_EQ( tree.FindKey( "a" ), nullptr );
}

TEST( KeyValues, GiveBackWhatWasSet )
{
	KeyValues tree( "root" );
	tree.SetInt( "int", -42 );
	tree.SetFloat( "float", 0.1f );
	tree.SetString( "string", "text" );
	EXPECT_EQ( tree.GetInt( "int" ), -42 );
	EXPECT_EQ( tree.GetFloat( "float" ), 0.1f );
	EXPECT_STREQ( tree.GetString( "string" ), "text" );
	EXPECT_THAT( NamesOf( tree ), ElementsAre( "int", "float", "string" ) );
}

TEST( KeyValues, ConvertBetweenNumbersAndTexts )
{
	KeyValues tree( "root" );
	tree.SetInt( "int", 12 );
	tree.SetFloat( "float", 2.75f );
	EXPECT_STREQ( tree.GetString( "int" ), "12" );
	EXPECT_EQ( tree.GetFloat( "int" ), 12.0f );
	EXPECT_STREQ( tree.GetString( "float" ), "2.75" );
	EXPECT_EQ( tree.GetInt( "float" ), 2 );
}

struct NumberText
{
	const char *m_pText;
	int m_nInt;
	float m_flFloat;
};

TEST( KeyValues, ReadNumbersAsTheCLibraryDoes )
{
	constexpr int INT_DEFAULT = 77;
	constexpr float FLOAT_DEFAULT = 7.5f;
	const NumberText texts[] = {
		{ "", INT_DEFAULT, FLOAT_DEFAULT },
		{ "  ", INT_DEFAULT, FLOAT_DEFAULT },
		{ "dark", INT_DEFAULT, FLOAT_DEFAULT },
		{ "-", INT_DEFAULT, FLOAT_DEFAULT },
		{ " +5 apples", 5, 5.0f },
		{ "010", 10, 10.0f },
		{ "1e2", 1, 100.0f },
		{ ".5", INT_DEFAULT, 0.5f },
		{ "1,5", 1, 1.0f },
		{ "2147483647", 2147483647, 2147483648.0f },
		{ "2147483648", 2147483647, 2147483648.0f },
		{ "-2147483649", -2147483647 - 1, -2147483648.0f },
		{ "99999999999999999999", 2147483647, 1e20f },
		{ "-99999999999999999999", -2147483647 - 1, -1e20f },
		{ "1e99", 1, std::numeric_limits<float>::infinity() },
		{ "-inf", INT_DEFAULT, -std::numeric_limits<float>::infinity() },
	};
	KeyValues tree( "root" );
	for ( const NumberText &text : texts )
	{
		tree.SetString( "n", text.m_pText );
		EXPECT_EQ( tree.GetInt( "n", INT_DEFAULT ), text.m_nInt ) << "of '" << text.m_pText << "'";
		EXPECT_EQ( tree.GetFloat( "n", FLOAT_DEFAULT ), text.m_flFloat ) << "of '" << text.m_pText << "'";
	}
}

TEST( KeyValues, KeepEveryIntAndFloatThroughTheTextForm )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	std::vector<uint32_t> patterns{ 0, 0x80000000, 1, 0x7F7FFFFF, 0x00800000, 0x7F800000, 0xFF800000, 0x7FFFFFFF };
	for ( int i = 0; i < 20000; i++ )
		patterns.push_back( static_cast<uint32_t>( random() ) );

	KeyValues saved( "root" );
	KeyValues loaded( "" );
	for ( const uint32_t nBits : patterns )
	{
		const float flValue = std::bit_cast<float>( nBits );
		const int nValue = std::bit_cast<int>( nBits );
		saved.SetFloat( "float", flValue );
		saved.SetInt( "int", nValue );
		ASSERT_TRUE( loaded.LoadFromBuffer( saved.SaveToBuffer() ) );
		ASSERT_EQ( loaded.GetInt( "int" ), nValue );
		const float flLoaded = loaded.GetFloat( "float" );
		if ( std::isnan( flValue ) )
			ASSERT_TRUE( std::isnan( flLoaded ) );
		else
			ASSERT_EQ( std::bit_cast<uint32_t>( flLoaded ), nBits ) << flValue << " became " << flLoaded;
	}
}

TEST( KeyValues, FindKeysWhateverTheirCase )
{
	KeyValues tree( "root" );
	tree.SetInt( "Zoom_Level", 3 );
	tree.SetInt( "ZOOM_LEVEL", 4 );
	EXPECT_EQ( tree.GetInt( "zoom_level" ), 4 );
	EXPECT_THAT( NamesOf( tree ), ElementsAre( "Zoom_Level" ) );
	// Only ASCII letters have a case here: these are Ü and ü in UTF-8.
	tree.SetInt( "\xC3\x9C", 1 );
	EXPECT_EQ( tree.FindKey( "\xC3\xBC" ), nullptr );
	// The neighbours of the letters are no letters.
	tree.SetInt( "@[", 1 );
	EXPECT_EQ( tree.FindKey( "`{" ), nullptr );
}

TEST( KeyValues, ASlashInAKeyHasNoMeaning )
{
	KeyValues tree( "root" );
	tree.FindKey( "a", true )->SetInt( "b", 1 );
	EXPECT_EQ( tree.GetInt( "a/b" ), 0 );
	tree.SetInt( "a/b", 2 );
	EXPECT_EQ( tree.GetInt( "a/b" ), 2 );
	EXPECT_EQ( tree.FindKey( "a" )->GetInt( "b" ), 1 );
}

TEST( KeyValues, ANullNameOrValueIsTheEmptyText )
{
	KeyValues tree( nullptr );
	EXPECT_STREQ( tree.GetName(), "" );
	tree.SetString( nullptr, nullptr );
	EXPECT_STREQ( tree.GetString( "", "none" ), "" );
	EXPECT_NE( tree.FindKey( nullptr ), nullptr );
}

TEST( KeyValues, AValueCanBeSetToItsOwnText )
{
	KeyValues tree( "root" );
	tree.SetString( "a", "a text that is too long for the short form of a string" );
	tree.SetString( "a", tree.GetString( "a" ) + 2 );
	EXPECT_STREQ( tree.GetString( "a" ), "text that is too long for the short form of a string" );
}

TEST( KeyValues, AValueReplacesASubTreeAndASubTreeReplacesAValue )
{
	KeyValues tree( "root" );
	tree.FindKey( "a", true )->SetInt( "b", 1 );
	EXPECT_TRUE( tree.FindKey( "a" )->IsSubTree() );
	EXPECT_EQ( tree.GetInt( "a", 9 ), 9 );
	EXPECT_EQ( tree.GetFloat( "a", 9.5f ), 9.5f );
	EXPECT_STREQ( tree.GetString( "a", "none" ), "none" );

	tree.SetInt( "a", 5 );
	EXPECT_FALSE( tree.FindKey( "a" )->IsSubTree() );
	EXPECT_EQ( tree.FindKey( "a" )->GetCount(), 0 );

	tree.FindKey( "a" )->SetInt( "c", 2 );
	EXPECT_TRUE( tree.FindKey( "a" )->IsSubTree() );
	EXPECT_STREQ( tree.FindKey( "a" )->GetValue(), "" );
	EXPECT_EQ( tree.GetInt( "a", 9 ), 9 );
}

TEST( KeyValues, AnAddedSubTreeTakesThePlaceOfAnEntryOfItsName )
{
	KeyValues tree( "root" );
	tree.SetInt( "first", 1 );
	tree.SetInt( "Second", 2 );
	tree.SetInt( "third", 3 );
	KeyValues *pNew = new KeyValues( "second" );
	pNew->SetInt( "inside", 4 );
	EXPECT_EQ( tree.AddSubTree( pNew ), pNew );
	EXPECT_THAT( NamesOf( tree ), ElementsAre( "first", "second", "third" ) );
	EXPECT_EQ( tree.FindKey( "second" )->GetInt( "inside" ), 4 );
	tree.AddSubTree( new KeyValues( "fourth" ) );
	EXPECT_THAT( NamesOf( tree ), ElementsAre( "first", "second", "third", "fourth" ) );
}

TEST( KeyValues, EntriesHaveAnOrderAndCanBeRemoved )
{
	KeyValues tree( "root" );
	for ( const char *pName : { "a", "b", "c" } )
		tree.SetString( pName, pName );
	EXPECT_FALSE( tree.RemoveKey( "d" ) );
	EXPECT_TRUE( tree.RemoveKey( "B" ) );
	EXPECT_FALSE( tree.RemoveKey( "b" ) );
	EXPECT_THAT( NamesOf( tree ), ElementsAre( "a", "c" ) );
	EXPECT_STREQ( tree.GetEntry( 1 )->GetValue(), "c" );
	EXPECT_EQ( tree.GetEntry( 2 ), nullptr );
	EXPECT_EQ( tree.GetEntry( -1 ), nullptr );
	EXPECT_EQ( std::as_const( tree ).GetEntry( 2 ), nullptr );
}

TEST( KeyValues, FindingWithCreationMakesAnEmptySubTreeOnce )
{
	KeyValues tree( "root" );
	KeyValues *pMade = tree.FindKey( "a", true );
	ASSERT_NE( pMade, nullptr );
	EXPECT_TRUE( pMade->IsSubTree() );
	EXPECT_EQ( tree.FindKey( "A", true ), pMade );
	EXPECT_EQ( tree.GetCount(), 1 );
}

TEST( KeyValues, ACopySharesNothingWithItsOriginal )
{
	KeyValues tree( "root" );
	tree.SetInt( "a", 1 );
	tree.FindKey( "sub", true )->SetInt( "b", 2 );
	const std::unique_ptr<KeyValues> pCopy( tree.MakeCopy() );
	EXPECT_EQ( pCopy->SaveToBuffer(), tree.SaveToBuffer() );
	tree.FindKey( "sub" )->SetInt( "b", 3 );
	tree.RemoveKey( "a" );
	EXPECT_EQ( pCopy->GetInt( "a" ), 1 );
	EXPECT_EQ( pCopy->FindKey( "sub" )->GetInt( "b" ), 2 );
}

// Makes a locale that writes numbers with a comma and chooses it, for the time of a test. Debian's own locales need not
// be installed, so it is compiled here.
class CommaLocale : public testing::Test
{
protected:
	void SetUp() override
	{
		namespace fs = std::filesystem;
		m_Folder = fs::path( testing::TempDir() ) / ( "comma-" + std::to_string( std::random_device{}() ) );
		fs::create_directory( m_Folder );
		std::ofstream( m_Folder / "comma.src" )
			<< "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\nEND LC_NUMERIC\n";
		std::ofstream map( m_Folder / "ascii.map" );
		map << "<code_set_name> ANSI_X3.4-1968\n<mb_cur_min> 1\n<mb_cur_max> 1\n<escape_char> /\n<comment_char> %\n"
			   "CHARMAP\n";
		for ( int i = 0; i < 128; i++ )
		{
			char line[64];
			std::snprintf( line, sizeof( line ), "<U%04X> /x%02x c\n", i, i );
			map << line;
		}
		map << "END CHARMAP\n";
		map.close();
		// It complains about the categories that are missing and makes the one that is there.
		const std::string command = "cd '" + m_Folder.string() +
									"' && localedef -c -i comma.src -f ./ascii.map ./xx_XX >/dev/null 2>&1 || true";
		ASSERT_EQ( std::system( command.c_str() ), 0 );
		setenv( "LOCPATH", m_Folder.c_str(), 1 );
		ASSERT_NE( std::setlocale( LC_NUMERIC, "xx_XX" ), nullptr );
	}

	void TearDown() override
	{
		std::setlocale( LC_NUMERIC, "C" );
		unsetenv( "LOCPATH" );
		std::filesystem::remove_all( m_Folder );
	}

	std::filesystem::path m_Folder;
};

TEST_F( CommaLocale, ChangesNothingInHowKeyValuesKeepNumbers )
{
	char text[16];
	std::snprintf( text, sizeof( text ), "%.1f", 1.5 );
	ASSERT_STREQ( text, "1,5" ) << "the locale must be in force for this test to mean something";

	KeyValues tree( "root" );
	tree.SetFloat( "f", 1234.5f );
	tree.SetInt( "i", 1234567 );
	EXPECT_STREQ( tree.GetString( "f" ), "1234.5" );
	EXPECT_STREQ( tree.GetString( "i" ), "1234567" );
	EXPECT_EQ( tree.GetFloat( "f" ), 1234.5f );
	tree.SetString( "f", "0.25" );
	EXPECT_EQ( tree.GetFloat( "f" ), 0.25f );
	tree.SetString( "f", "0,25" );
	EXPECT_EQ( tree.GetFloat( "f" ), 0.0f );
	KeyValues loaded( "" );
	ASSERT_TRUE( loaded.LoadFromBuffer( "n { f 2.5 }" ) );
	EXPECT_EQ( loaded.GetFloat( "f" ), 2.5f );
}
} // namespace
