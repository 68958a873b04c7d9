// KeyValues text: what loads is saved as a text that loads as the same tree and is saved as the same text; what does
// not load leaves the tree alone and names a place inside the text.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "keel0/keyvalues.h"
#include "require.h"

namespace
{
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
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	const std::string_view text( reinterpret_cast<const char *>( pData ), nSize );
	KeyValues tree( "before" );
	tree.SetInt( "kept", 1 );
	KeyValues::ParseError error;
	if ( !tree.LoadFromBuffer( text, &error ) )
	{
		Require( tree.SaveToBuffer() == "\"before\"\n{\n\t\"kept\"\t\t\"1\"\n}\n", "a broken text changes nothing" );
		RequirePlaceInside( text, error );
		return 0;
	}
	RequireReachable( tree );
	const std::string saved = tree.SaveToBuffer();
	KeyValues loaded( "" );
	Require( loaded.LoadFromBuffer( saved ), "a saved text loads" );
	RequireSame( tree, loaded );
	Require( loaded.SaveToBuffer() == saved, "a saved text is saved the same again" );
	const std::unique_ptr<KeyValues> pCopy( tree.MakeCopy() );
	RequireSame( tree, *pCopy );
	return 0;
}
