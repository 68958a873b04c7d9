#include "miniprofiler/miniprofilergrouping.h"

#include <algorithm>

namespace
{
bool IsSeparator( char ch )
{
	return ch == '/' || ch == '\\' || ch == ':';
}

// Whether there is room below pParent for a record that must not hang below itself.
bool CanHangBelow( const CQMiniProfilerRecord &record, const CQMiniProfilerRecord *pParent )
{
	for ( size_t nLevels = 1; pParent != &record; nLevels++ )
	{
		if ( nLevels == MINIPROFILER_MAX_RECORD_LEVELS )
			return false;
		pParent = AsRecord( pParent->m_pTreeParent );
		if ( !pParent )
			return true;
	}
	return false;
}
} // namespace

MiniProfilerGroupMode MiniProfilerGroupModeOf( int nValue )
{
	const bool bKnown = nValue >= static_cast<int>( MiniProfilerGroupMode::Budget ) &&
						nValue <= static_cast<int>( MiniProfilerGroupMode::Project );
	return bKnown ? static_cast<MiniProfilerGroupMode>( nValue ) : MiniProfilerGroupMode::None;
}

MiniProfilerLeafMode MiniProfilerLeafModeOf( int nValue )
{
	const bool bKnown = nValue >= static_cast<int>( MiniProfilerLeafMode::StaticTree ) &&
						nValue <= static_cast<int>( MiniProfilerLeafMode::DynamicTree );
	return bKnown ? static_cast<MiniProfilerLeafMode>( nValue ) : MiniProfilerLeafMode::None;
}

void SplitMiniProfilerPath(
	std::string_view path, const std::function<void( std::string_view key, std::string_view name )> &found )
{
	size_t nStart = 0; // of the component's name: its separator, but for the first
	size_t nPosition = 0;
	size_t nLevels = 1; // with the last one
	while ( nPosition < path.size() && nLevels < MINIPROFILER_MAX_PATH_LEVELS )
	{
		if ( !IsSeparator( path[nPosition] ) )
		{
			nPosition++;
			continue;
		}
		found( path.substr( 0, nPosition ), path.substr( nStart, nPosition - nStart ) );
		nLevels++;
		nStart = nPosition;
		nPosition += path.substr( nPosition, 2 ) == "::" ? 2 : 1;
	}
	if ( !path.empty() )
		found( path, path.substr( nStart ) );
}

size_t CommonPrefixLength( std::string_view a, std::string_view b )
{
	const auto end = std::mismatch( a.begin(), a.end(), b.begin(), b.end() ).first;
	auto nLength = static_cast<size_t>( end - a.begin() );
	const auto IsContinuation = []( std::string_view text, size_t nIndex )
	{ return nIndex < text.size() && ( text[nIndex] & 0xC0 ) == 0x80; };
	while ( nLength > 0 && ( IsContinuation( a, nLength ) || IsContinuation( b, nLength ) ) )
		nLength--;
	return nLength;
}

CMiniProfilerRow *MiniProfilerPlacementTarget( const CQMiniProfilerRecord &record, MiniProfilerLeafMode mode )
{
	CQMiniProfilerRecord *pParent = nullptr;
	if ( mode == MiniProfilerLeafMode::StaticTree )
		pParent = record.m_pStaticParent;
	else if ( mode == MiniProfilerLeafMode::DynamicTree )
		pParent = record.m_pCaller;

	const bool bTaken = pParent && pParent->m_pGroup == record.m_pGroup && CanHangBelow( record, pParent );
	return bTaken ? static_cast<CMiniProfilerRow *>( pParent ) : record.m_pGroup;
}
