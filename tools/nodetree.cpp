#include "tools/nodetree.h"

#include <algorithm>

#include "wire/recordingtokens.h"

CNodeTree::CNodeTree( const CKestoFile &file )
	: m_File( file )
{
	const int32_t nRoot = file.GetRootNode();
	if ( nRoot < 0 || nRoot >= wire::RECORDING_MAX_NODES || file.GetFrameCount() + file.GetNodeCount() == 0 )
		return;
	std::vector<bool> found( wire::RECORDING_MAX_NODES );
	std::vector<bool> followed( wire::RECORDING_MAX_NODES ); // to its next sibling; the root may be in a chain, too
	std::vector<Row> next{ { nRoot, -1, 0 } };
	while ( !next.empty() )
	{
		const Row row = next.back();
		next.pop_back();
		const auto nIndex = static_cast<size_t>( row.m_nNode );
		const int32_t nSibling = file.GetNodeNextSibling( row.m_nNode );
		if ( row.m_nParentRow >= 0 && nSibling >= 0 && !followed[nIndex] )
		{
			followed[nIndex] = true;
			next.push_back( { nSibling, row.m_nParentRow, row.m_nDepth } );
		}
		if ( found[nIndex] )
			continue;
		found[nIndex] = true;
		const auto nRow = static_cast<int32_t>( m_Rows.size() );
		m_Rows.push_back( row );
		m_nLevels = std::max( m_nLevels, row.m_nDepth + 1 );
		if ( const int32_t nChild = file.GetNodeFirstChild( row.m_nNode ); nChild >= 0 )
			next.push_back( { nChild, nRow, row.m_nDepth + 1 } );
	}
}

std::string CNodeTree::Path( const Row &row ) const
{
	if ( row.m_nParentRow < 0 )
		return Name( row ).empty() ? "(root)" : std::string( Name( row ) );
	std::vector<std::string_view> names;
	const Row *pRow = &row;
	for ( ; pRow->m_nParentRow >= 0 && names.size() < MAX_PATH_NAMES;
		  pRow = &m_Rows[static_cast<size_t>( pRow->m_nParentRow )] )
		names.push_back( Name( *pRow ) );
	std::string path = pRow->m_nParentRow >= 0 ? "..." : "";
	for ( auto it = names.rbegin(); it != names.rend(); ++it )
	{
		if ( !path.empty() || it != names.rbegin() )
			path += '/';
		path += *it;
	}
	return path;
}

bool CNodeTree::IsNamed( const Row &row, std::string_view latin1 ) const
{
	return ( Name( row ) == latin1 && !latin1.empty() ) || HasPath( row, latin1 );
}

// Compares from the end, so that a deep node costs no more than the text is long.
bool CNodeTree::HasPath( const Row &row, std::string_view latin1 ) const
{
	const Row *pRow = &row;
	if ( pRow->m_nParentRow < 0 )
		return latin1 == "(root)";
	for ( ;; )
	{
		const std::string_view name = Name( *pRow );
		if ( !latin1.ends_with( name ) )
			return false;
		latin1.remove_suffix( name.size() );
		pRow = &m_Rows[static_cast<size_t>( pRow->m_nParentRow )];
		if ( pRow->m_nParentRow < 0 )
			return latin1.empty();
		if ( !latin1.ends_with( '/' ) )
			return false;
		latin1.remove_suffix( 1 );
	}
}
