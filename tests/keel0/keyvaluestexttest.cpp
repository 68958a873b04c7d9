#include <gmock/gmock.h>

#include <memory>
#include <ostream>
#include <set>

#include "keel0/keyvalues.h"
#include "support/randomseed.h"

namespace
{
// A tree as plain data, built and compared without the code under test.
struct Plain
{
	std::string m_Name;
	bool m_bIsTree = true;
	std::string m_Value;
	std::vector<Plain> m_Entries;

	friend bool operator==( const Plain &, const Plain & ) = default;
};

Plain PlainFrom( const KeyValues &tree )
{
	Plain plain{ tree.GetName(), tree.IsSubTree(), tree.GetValue(), {} };
	for ( int i = 0; i < tree.GetCount(); i++ )
		plain.m_Entries.push_back( PlainFrom( *tree.GetEntry( i ) ) );
	return plain;
}

KeyValues *TreeFrom( const Plain &plain )
{
	KeyValues *pTree = new KeyValues( plain.m_Name.c_str() );
	for ( const Plain &entry : plain.m_Entries )
		if ( entry.m_bIsTree )
			pTree->AddSubTree( TreeFrom( entry ) );
		else
			pTree->SetString( entry.m_Name.c_str(), entry.m_Value.c_str() );
	return pTree;
}

Plain Value( const char *pName, const std::string &value )
{
	return { pName, false, value, {} };
}

Plain Tree( const char *pName, std::vector<Plain> entries )
{
	return { pName, true, "", std::move( entries ) };
}

Plain Load( std::string_view text )
{
	KeyValues tree( "before" );
	KeyValues::ParseError error;
	if ( !tree.LoadFromBuffer( text, &error ) )
		ADD_FAILURE() << "line " << error.m_nLine << ", column " << error.m_nColumn << ": " << error.m_Message;
	return PlainFrom( tree );
}

TEST( KeyValuesText, IsWrittenWithQuotesBracesAndTabs )
{
	KeyValues tree( "Tessel" );
	tree.SetString( "style", "dark" );
	KeyValues *pRecent = tree.FindKey( "recent", true );
	pRecent->SetString( "0", "127.0.0.1:27190" );
	tree.FindKey( "empty", true );
	EXPECT_EQ( tree.SaveToBuffer(), "\"Tessel\"\n"
									"{\n"
									"\t\"style\"\t\t\"dark\"\n"
									"\t\"recent\"\n"
									"\t{\n"
									"\t\t\"0\"\t\t\"127.0.0.1:27190\"\n"
									"\t}\n"
									"\t\"empty\"\n"
									"\t{\n"
									"\t}\n"
									"}\n" );
}

TEST( KeyValuesText, EscapesWhatCannotStandInQuotes )
{
	KeyValues tree( "n" );
	tree.SetString( "a", "\" \\ \n \r \t \x01 \x1F \x7F \xC3\xBC //{}" );
	EXPECT_EQ(
		tree.SaveToBuffer(), "\"n\"\n{\n\t\"a\"\t\t\"\\\" \\\\ \\n \\r \\t \\x01 \\x1F \\x7F \xC3\xBC //{}\"\n}\n" );
}

TEST( KeyValuesText, IsReadWithBareWordsCommentsAndAnyBlanks )
{
	const Plain expected =
		Tree( "root", { Value( "a", "1" ), Tree( "sub", { Value( "b c", "" ) } ), Value( "d", "2" ) } );
	EXPECT_EQ( Load( "root { a 1 sub { \"b c\" \"\" } d 2 }" ), expected );
	EXPECT_EQ(
		Load( "root // name\r\n{ // block\r\n\ta\t1\r\n\tsub\r\n{\"b c\"\"\"}\f\v d // value\n2}// end" ), expected );
	EXPECT_EQ( Load( "\"root\"{\"a\"\"1\"\"sub\"{\"b c\"\"\"}\"d\"\"2\"}" ), expected );
	EXPECT_EQ( Load( "root{a\"1\"sub{\"b c\"\"\"}d 2}" ), expected );
}

TEST( KeyValuesText, TwoSlashesInsideABareWordBelongToIt )
{
	EXPECT_EQ( Load( "n { url http://host//x y/ / // comment }\n}" ),
		Tree( "n", { Value( "url", "http://host//x" ), Value( "y/", "/" ) } ) );
}

TEST( KeyValuesText, ReadsEveryEscape )
{
	EXPECT_EQ( Load( "n \"\\\" \\\\ \\n \\r \\t \\x41 \\xfF\\x0a1\"" ), Value( "n", "\" \\ \n \r \t A \xFF\n1" ) );
}

TEST( KeyValuesText, ASingleValueIsAWholeText )
{
	EXPECT_EQ( Load( "name value" ), Value( "name", "value" ) );
	EXPECT_EQ( Load( "\"\" \"\"" ), Value( "", "" ) );
}

TEST( KeyValuesText, AByteOrderMarkInFrontIsSkipped )
{
	EXPECT_EQ( Load( "\xEF\xBB\xBFname value" ), Value( "name", "value" ) );
}

TEST( KeyValuesText, ReplacesNameAndContentOfTheTreeThatReadsIt )
{
	KeyValues tree( "old" );
	tree.SetInt( "a", 1 );
	ASSERT_TRUE( tree.LoadFromBuffer( "new { b 2 }" ) );
	EXPECT_EQ( PlainFrom( tree ), Tree( "new", { Value( "b", "2" ) } ) );
	ASSERT_TRUE( tree.LoadFromBuffer( "new value" ) );
	EXPECT_EQ( PlainFrom( tree ), Value( "new", "value" ) );
}

std::string Nested( int nLevels )
{
	std::string text;
	for ( int i = 0; i < nLevels; i++ )
		text += "n{";
	return text + std::string( static_cast<size_t>( nLevels ), '}' );
}

TEST( KeyValuesText, SixtyFourBlocksMayLieInOneAnother )
{
	KeyValues tree( "" );
	ASSERT_TRUE( tree.LoadFromBuffer( Nested( 64 ) ) );
	int nLevels = 0;
	for ( const KeyValues *pTree = &tree; pTree; pTree = pTree->FindKey( "n" ) )
		nLevels++;
	EXPECT_EQ( nLevels, 64 );
}

struct BadText
{
	std::string m_Text;
	uint32_t m_nLine;
	uint32_t m_nColumn;
	const char *m_pMessage;
};

void PrintTo( const BadText &bad, std::ostream *pOut )
{
	*pOut << testing::PrintToString( bad.m_Text );
}

class BadKeyValuesText : public testing::TestWithParam<BadText>
{
};

TEST_P( BadKeyValuesText, IsRefusedWithLineAndColumnAndLeavesTheTree )
{
	KeyValues tree( "old" );
	tree.SetInt( "a", 1 );
	const std::string before = tree.SaveToBuffer();
	KeyValues::ParseError error;
	EXPECT_FALSE( tree.LoadFromBuffer( GetParam().m_Text, &error ) );
	EXPECT_EQ( error.m_nLine, GetParam().m_nLine );
	EXPECT_EQ( error.m_nColumn, GetParam().m_nColumn );
	EXPECT_EQ( error.m_Message, GetParam().m_pMessage );
	EXPECT_EQ( tree.SaveToBuffer(), before );
	EXPECT_FALSE( tree.LoadFromBuffer( GetParam().m_Text ) ) << "also when nobody asks why";
}

constexpr const char *BYTE_0 = "the byte 0 cannot stand in a text";
constexpr const char *NOT_ENDED = "the quoted text that begins here does not end on its line";
constexpr const char *HEX = "\\x needs two hexadecimal digits";
constexpr const char *AT_LINE_END = "a backslash cannot be the last character of its line";

INSTANTIATE_TEST_SUITE_P( WhereSomethingIsMissing, BadKeyValuesText,
	testing::Values( BadText{ "", 1, 1, "expected a name, found the end of the text" },
		BadText{ "\n // only a comment", 2, 19, "expected a name, found the end of the text" },
		BadText{ "\r\n\n  }", 3, 3, "expected a name, found '}'" },
		BadText{ "{ }", 1, 1, "expected a name, found '{'" },
		BadText{ "name", 1, 5, "expected a value or '{', found the end of the text" },
		BadText{ "name\n// {}", 2, 6, "expected a value or '{', found the end of the text" },
		BadText{ "name }", 1, 6, "expected a value or '{', found '}'" },
		BadText{ "name {\n\ta\n}", 3, 1, "expected a value or '{', found '}'" },
		BadText{ "name { {", 1, 8, "expected a name or '}', found '{'" },
		BadText{ "name {", 1, 7, "the block that begins in line 1, column 6 does not end" },
		BadText{ "name\n{\n\ta {\n\t\tb 1\n\t}\n", 6, 1, "the block that begins in line 2, column 1 does not end" },
		BadText{ "name { a { b 1 ", 1, 16, "the block that begins in line 1, column 10 does not end" } ) );

INSTANTIATE_TEST_SUITE_P( WhereSomethingIsTooMuch, BadKeyValuesText,
	testing::Values( BadText{ "name value more", 1, 12, "expected the end of the text, found 'm'" },
		BadText{ "name { }\n}", 2, 1, "expected the end of the text, found '}'" },
		BadText{ "name { } \x01", 1, 10, "expected the end of the text, found the byte 0x01" },
		BadText{ "name { } \xC3\xBC", 1, 10, "expected the end of the text, found the byte 0xC3" },
		BadText{ "n { a 1 B 2\n A 3 }", 2, 2, "the name stands in this block already, in line 1, column 5" },
		BadText{ "n { a 1 \"\\x41\" 2 }", 1, 9, "the name stands in this block already, in line 1, column 5" },
		BadText{ Nested( 65 ), 1, 130, "more than 64 blocks inside one another" } ) );

INSTANTIATE_TEST_SUITE_P( InQuotes, BadKeyValuesText,
	testing::Values( BadText{ "name \"abc", 1, 6, NOT_ENDED }, BadText{ "name \"abc\n\"", 1, 6, NOT_ENDED },
		BadText{ "name { \"a b", 1, 8, NOT_ENDED },
		BadText{ "\"\xC3\xBC\" \"\\q\"", 1, 7, "a backslash cannot stand before 'q'" },
		BadText{ "\xEF\xBB\xBFn \"a\\'\"", 1, 5, "a backslash cannot stand before '''" },
		BadText{ "n \"a\\\x02\"", 1, 5, "a backslash cannot stand before the byte 0x02" },
		BadText{ "n \"a\\", 1, 5, AT_LINE_END }, BadText{ "n \"a\\\n\"", 1, 5, AT_LINE_END },
		BadText{ "n \"\\x", 1, 4, HEX }, BadText{ "n \"\\x4\"", 1, 4, HEX }, BadText{ "n \"\\x4g\"", 1, 4, HEX },
		BadText{ "n \"\\xG4\"", 1, 4, HEX }, BadText{ "n \"ab\\x00\"", 1, 6, BYTE_0 } ) );

INSTANTIATE_TEST_SUITE_P( WithTheByte0, BadKeyValuesText,
	testing::Values( BadText{ std::string( "\0n v", 4 ), 1, 1, BYTE_0 },
		BadText{ std::string( "n\0 v", 4 ), 1, 2, BYTE_0 }, BadText{ std::string( "n \"v\0\"", 6 ), 1, 5, BYTE_0 },
		BadText{ std::string( "n v // \0", 8 ), 1, 8, BYTE_0 }, BadText{ std::string( "n v\n\0", 5 ), 2, 1, BYTE_0 },
		BadText{ std::string( "n \0", 3 ), 1, 3, BYTE_0 }, BadText{ std::string( "n { a\0", 6 ), 1, 6, BYTE_0 } ) );

TEST( KeyValuesText, TheSameNameMayStandInDifferentBlocks )
{
	EXPECT_EQ( Load( "n { n { n 1 } m { n 2 } }" ),
		Tree( "n", { Tree( "n", { Value( "n", "1" ) } ), Tree( "m", { Value( "n", "2" ) } ) } ) );
}

TEST( KeyValuesText, MayHaveSixtyFourMebibytesAndNoByteMore )
{
	std::string text( size_t{ 64 } << 20, ' ' );
	text.replace( text.size() - 3, 3, "n v" );
	EXPECT_EQ( Load( text ), Value( "n", "v" ) );
	text += ' ';
	KeyValues tree( "old" );
	KeyValues::ParseError error;
	EXPECT_FALSE( tree.LoadFromBuffer( text, &error ) );
	EXPECT_EQ( error.m_nLine, 0u );
	EXPECT_EQ( error.m_Message, "the text is longer than 67108864 bytes" );
	EXPECT_STREQ( tree.GetName(), "old" );
}

// In one block and in many, since each entry takes memory wherever it stands.
TEST( KeyValuesText, MayHave500000EntriesAndNoEntryMore )
{
	std::string block;
	for ( int i = 0; i < 999; i++ )
		block += std::to_string( i ) + "{}\n";
	std::string text = "root {\n";
	for ( int i = 0; i < 500; i++ ) // 1,000 entries each, with their own
		text += std::to_string( i ) + "{\n" + block + "}\n";
	KeyValues tree( "" );
	EXPECT_TRUE( tree.LoadFromBuffer( text + '}' ) );
	EXPECT_EQ( tree.GetCount(), 500 );
	KeyValues::ParseError error;
	EXPECT_FALSE( tree.LoadFromBuffer( text + "  last x }", &error ) );
	EXPECT_EQ( error.m_Message, "more than 500000 entries" );
	EXPECT_EQ( error.m_nLine, 2u + 500u * 1001u );
	EXPECT_EQ( error.m_nColumn, 3u );
	EXPECT_EQ( tree.GetCount(), 500 ) << "the tree is as before";
}

TEST( KeyValuesText, ABlockOfManyNamesIsRead )
{
	// Were each name compared with all before it, the time limit of the test would end it.
	constexpr int NAMES = 400'000;
	std::string text = "n {";
	for ( int i = 0; i < NAMES; i++ )
		text += ' ' + std::to_string( i ) + " v";
	KeyValues tree( "" );
	ASSERT_TRUE( tree.LoadFromBuffer( text + " }" ) );
	EXPECT_EQ( tree.GetCount(), NAMES );
}

// Trees with every byte but 0 in names and values.
class CRandomTrees
{
public:
	explicit CRandomTrees( uint32_t nSeed )
		: m_Random( nSeed )
	{
	}

	Plain Make( int nLevels )
	{
		Plain tree{ Text(), true, "", {} };
		std::set<std::string> names;
		const int nEntries = nLevels > 1 ? Below( 6 ) : Below( 3 );
		for ( int i = 0; i < nEntries; i++ )
		{
			Plain entry = nLevels > 1 && Below( 3 ) == 0 ? Make( nLevels - 1 ) : Plain{ Text(), false, Text(), {} };
			if ( names.insert( Folded( entry.m_Name ) ).second )
				tree.m_Entries.push_back( std::move( entry ) );
		}
		return tree;
	}

private:
	int Below( int nLimit ) { return std::uniform_int_distribution( 0, nLimit - 1 )( m_Random ); }

	std::string Text()
	{
		std::string text;
		for ( int nLength = Below( 12 ); nLength > 0; nLength-- )
			text += static_cast<char>( 1 + Below( 255 ) );
		return text;
	}

	static std::string Folded( std::string name )
	{
		for ( char &c : name )
			if ( c >= 'A' && c <= 'Z' )
				c = static_cast<char>( c | 0x20 );
		return name;
	}

	std::mt19937 m_Random;
};

TEST( KeyValuesText, RandomTreesSurviveSavingAndLoading )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	CRandomTrees trees( nSeed );
	for ( int i = 0; i < 500; i++ )
	{
		const Plain expected = trees.Make( 1 + i % 8 );
		const std::unique_ptr<KeyValues> pTree( TreeFrom( expected ) );
		const std::string text = pTree->SaveToBuffer();
		ASSERT_EQ( Load( text ), expected ) << text;
		const std::unique_ptr<KeyValues> pCopy( pTree->MakeCopy() );
		ASSERT_EQ( PlainFrom( *pCopy ), expected );
		ASSERT_EQ( pCopy->SaveToBuffer(), text );
	}
}

TEST( KeyValuesText, EveryByteSurvivesInNamesAndValues )
{
	for ( int nByte = 1; nByte < 256; nByte++ )
	{
		const std::string text = { 'x', static_cast<char>( nByte ), 'F', '0' };
		KeyValues tree( text.c_str() );
		tree.SetString( text.c_str(), text.c_str() );
		ASSERT_EQ( Load( tree.SaveToBuffer() ), Tree( text.c_str(), { Value( text.c_str(), text ) } ) ) << nByte;
	}
}
} // namespace
