// KeyValues text: what loads is what a second, plainer reader finds, and is saved as a text that loads as the same tree
// and is saved as the same text; what does not load leaves the tree alone and names a place inside the text.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "keel0/keyvalues.h"
#include "memorylimit.h"
#include "require.h"

namespace
{
// A word, or a brace.
struct Token
{
	char m_Brace = 0; // 0 for a word
	std::string m_Word;
};

// The text inside of quotes with its escapes resolved; none when one is wrong.
std::optional<std::string> Unescape( std::string_view text )
{
	const std::string_view kinds = "\"\\nrt";
	const std::string_view bytes = "\"\\\n\r\t";
	std::string result;
	for ( size_t i = 0; i < text.size(); i++ )
	{
		if ( text[i] != '\\' )
		{
			result += text[i];
			continue;
		}
		i++;
		if ( i == text.size() )
			return std::nullopt;
		if ( const size_t nKind = kinds.find( text[i] ); nKind != std::string_view::npos )
		{
			result += bytes[nKind];
			continue;
		}
		const std::string digits( text.substr( i + 1, 2 ) );
		if ( text[i] != 'x' || digits.size() < 2 ||
			 digits.find_first_not_of( "0123456789abcdefABCDEF" ) != std::string::npos || digits == "00" )
			return std::nullopt;
		result += static_cast<char>( std::stoi( digits, nullptr, 16 ) );
		i += 2;
	}
	return result;
}

// Cuts the front word, comment or brace off the text, which begins with no blank. False when that is not possible.
bool CutToken( std::string_view &text, std::vector<Token> &tokens )
{
	size_t nLength = 1;
	if ( text.starts_with( "//" ) )
	{
		nLength = std::min( text.find( '\n' ), text.size() );
	}
	else if ( text[0] == '{' || text[0] == '}' )
	{
		tokens.push_back( { text[0], "" } );
	}
	else if ( text[0] == '"' )
	{
		while ( nLength < text.size() && text[nLength] != '"' && text[nLength] != '\n' )
			nLength += text[nLength] == '\\' ? 2 : 1;
		if ( nLength >= text.size() || text[nLength] != '"' )
			return false;
		const auto word = Unescape( text.substr( 1, nLength - 1 ) );
		if ( !word )
			return false;
		tokens.push_back( { 0, *word } );
		nLength++;
	}
	else
	{
		nLength = std::min( text.find_first_of( " \t\n\v\f\r\"{}" ), text.size() );
		tokens.push_back( { 0, std::string( text.substr( 0, nLength ) ) } );
	}
	text.remove_prefix( nLength );
	return true;
}

std::optional<std::vector<Token>> Tokens( std::string_view text )
{
	if ( text.find( '\0' ) != std::string_view::npos )
		return std::nullopt;
	if ( text.starts_with( "\xEF\xBB\xBF" ) )
		text.remove_prefix( 3 );
	std::vector<Token> tokens;
	for ( ;; )
	{
		text.remove_prefix( std::min( text.find_first_not_of( " \t\n\v\f\r" ), text.size() ) );
		if ( text.empty() )
			return tokens;
		if ( !CutToken( text, tokens ) )
			return std::nullopt;
	}
}

std::string LowerCase( std::string name )
{
	for ( char &c : name )
		if ( c >= 'A' && c <= 'Z' )
			c = static_cast<char>( c | 0x20 );
	return name;
}

// Takes one entry from the front of the tokens and compares it with pTree, where there is one. False when the tokens
// are no entry.
bool TakeEntry( std::span<const Token> &tokens, const KeyValues *pTree, int nLevel )
{
	if ( tokens.size() < 2 || tokens[0].m_Brace || tokens[1].m_Brace == '}' )
		return false;
	const std::string name = tokens[0].m_Word;
	const Token content = tokens[1];
	tokens = tokens.subspan( 2 );
	Require( !pTree || name == pTree->GetName(), "both readers find the same name" );
	Require( !pTree || pTree->IsSubTree() == ( content.m_Brace == '{' ), "both readers find a block or a value" );
	if ( !content.m_Brace )
	{
		Require( !pTree || content.m_Word == pTree->GetValue(), "both readers find the same value" );
		return true;
	}
	if ( nLevel > 64 )
		return false;
	std::set<std::string> names;
	int nEntries = 0;
	for ( ; !tokens.empty() && tokens[0].m_Brace != '}'; nEntries++ )
	{
		const bool bNew = names.insert( LowerCase( tokens[0].m_Word ) ).second;
		const KeyValues *pEntry = pTree ? pTree->GetEntry( nEntries ) : nullptr;
		Require( !pTree || pEntry, "both readers find as many entries" );
		if ( !bNew || !TakeEntry( tokens, pEntry, nLevel + 1 ) )
			return false;
	}
	Require( !pTree || pTree->GetCount() == nEntries, "both readers find as many entries" );
	if ( tokens.empty() )
		return false;
	tokens = tokens.subspan( 1 );
	return true;
}

// Whether the second reader takes the text; what it finds is compared with pTree unless that is null.
bool SecondReader( std::string_view text, const KeyValues *pTree )
{
	const auto tokens = Tokens( text );
	if ( !tokens )
		return false;
	std::span<const Token> rest = *tokens;
	return TakeEntry( rest, pTree, 1 ) && rest.empty();
}

void RequirePlain( std::string_view saved )
{
	for ( const char c : saved )
	{
		const unsigned nByte = static_cast<unsigned char>( c );
		Require( ( nByte >= 0x20 && nByte != 0x7F ) || c == '\n' || c == '\t', "a saved text has no control bytes" );
	}
}

void RequireSame( const KeyValues &a, const KeyValues &b )
{
	Require( std::string_view( a.GetName() ) == b.GetName(), "names survive" );
	Require( a.IsSubTree() == b.IsSubTree(), "blocks and values stay what they are" );
	Require( std::string_view( a.GetValue() ) == b.GetValue(), "values survive" );
	Require( a.GetCount() == b.GetCount(), "entries survive" );
	for ( int i = 0; i < a.GetCount(); i++ )
		RequireSame( *a.GetEntry( i ), *b.GetEntry( i ) );
}

// Every entry is found under its name: nothing in a loaded tree is out of reach.
void RequireReachable( const KeyValues &tree )
{
	for ( int i = 0; i < tree.GetCount(); i++ )
	{
		const KeyValues *pEntry = tree.GetEntry( i );
		Require( tree.FindKey( pEntry->GetName() ) == pEntry, "an entry is found under its name" );
		RequireReachable( *pEntry );
	}
}

void RequirePlaceInside( std::string_view text, const KeyValues::ParseError &error )
{
	if ( text.starts_with( "\xEF\xBB\xBF" ) )
		text.remove_prefix( 3 );
	Require( error.m_nLine >= 1 && error.m_nColumn >= 1, "an error has a place" );
	Require( !error.m_Message.empty(), "an error has a reason" );
	for ( uint32_t nLine = 1; nLine < error.m_nLine; nLine++ )
	{
		const size_t nEnd = text.find( '\n' );
		Require( nEnd != std::string_view::npos, "the line of an error is a line of the text" );
		text.remove_prefix( nEnd + 1 );
	}
	const size_t nLineLength = std::min( text.find( '\n' ), text.size() );
	Require( error.m_nColumn <= nLineLength + 1, "the column of an error is in its line or right behind it" );
}

bool Load( KeyValues &tree, std::string_view text, KeyValues::ParseError &error )
{
	CMemoryLimit limit( text.size() );
	return tree.LoadFromBuffer( text, &error );
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	const std::string_view text( reinterpret_cast<const char *>( pData ), nSize );
	KeyValues tree( "before" );
	tree.SetInt( "kept", 1 );
	KeyValues::ParseError error;
	if ( !Load( tree, text, error ) )
	{
		Require( tree.SaveToBuffer() == "\"before\"\n{\n\t\"kept\"\t\t\"1\"\n}\n", "a broken text changes nothing" );
		RequirePlaceInside( text, error );
		Require( !SecondReader( text, nullptr ), "both readers refuse the same texts" );
		return 0;
	}
	Require( SecondReader( text, &tree ), "both readers take the same texts" );
	RequireReachable( tree );
	const std::string saved = tree.SaveToBuffer();
	RequirePlain( saved );
	KeyValues loaded( "" );
	Require( loaded.LoadFromBuffer( saved ), "a saved text loads" );
	RequireSame( tree, loaded );
	Require( loaded.SaveToBuffer() == saved, "a saved text is saved the same again" );
	const std::unique_ptr<KeyValues> pCopy( tree.MakeCopy() );
	RequireSame( tree, *pCopy );
	return 0;
}
