#include "recordings/noderows.h"

#include <algorithm>
#include <utility>

NodeRows::NodeRows( const CKestoFile &file, const NodeRowLimits &limits )
{
	const int32_t nRoot = file.GetRootNode();
	if ( nRoot < 0 || nRoot >= wire::RECORDING_MAX_NODES )
		return;
	m_LastRows.assign( static_cast<size_t>( std::max( nRoot + 1, file.GetNodeCount() ) ), -1 );

	struct Level
	{
		int32_t m_nRow;
		int32_t m_nNextChild;
	};
	std::vector<Level> levels; // from the root down to the row that gets children now
	std::vector<bool> isAncestor( m_LastRows.size() );
	std::vector<int32_t> leftOut; // first nodes of what is left of chains
	int32_t nLeaves = 0;

	const auto descend = [&]( int32_t nNode, int32_t nParentRow )
	{
		AddRow( nNode, nParentRow, nLeaves );
		const int32_t nChild = isAncestor[static_cast<size_t>( nNode )] ? -1 : file.GetNodeFirstChild( nNode );
		const bool bTooDeep = m_Rows.back().m_nDepth >= limits.m_nLevels;
		if ( nChild >= 0 && !bTooDeep && Count() < limits.m_nRows )
		{
			levels.push_back( { Count() - 1, nChild } );
			isAncestor[static_cast<size_t>( nNode )] = true;
			return;
		}
		nLeaves++;
		if ( nChild >= 0 )
			leftOut.push_back( nChild );
	};

	descend( nRoot, -1 );
	while ( !levels.empty() )
	{
		const int32_t nChild = levels.back().m_nNextChild;
		if ( nChild < 0 )
		{
			isAncestor[static_cast<size_t>( m_Rows[static_cast<size_t>( levels.back().m_nRow )].m_nNode )] = false;
			levels.pop_back();
			continue;
		}
		const bool bFull = Count() >= limits.m_nRows;
		levels.back().m_nNextChild = bFull ? -1 : file.GetNodeNextSibling( nChild );
		if ( bFull )
			leftOut.push_back( nChild );
		else
			descend( nChild, levels.back().m_nRow );
	}
	CountLeftOut( file, std::move( leftOut ) );
}

void NodeRows::AddRow( int32_t nNode, int32_t nParentRow, int32_t nFirstLeaf )
{
	int32_t &nLastRow = m_LastRows[static_cast<size_t>( nNode )];
	const int32_t nDepth = nParentRow < 0 ? 0 : ( *this )[nParentRow].m_nDepth + 1;
	m_Rows.push_back( { nNode, nParentRow, nDepth, nFirstLeaf, nLastRow } );
	nLastRow = Count() - 1;
}

int32_t NodeRows::RowOf( int32_t nNode ) const
{
	return nNode >= 0 && static_cast<size_t>( nNode ) < m_LastRows.size() ? m_LastRows[static_cast<size_t>( nNode )]
																		  : -1;
}

// Everything in the chains and below, without asking how often. A node that was counted before ends a chain: what
// follows it was counted with it. So chains that many nodes share are walked once.
void NodeRows::CountLeftOut( const CKestoFile &file, std::vector<int32_t> chains )
{
	std::vector<bool> counted( m_LastRows.size() );
	while ( !chains.empty() )
	{
		int32_t nNode = chains.back();
		chains.pop_back();
		for ( ; nNode >= 0 && !counted[static_cast<size_t>( nNode )]; nNode = file.GetNodeNextSibling( nNode ) )
		{
			counted[static_cast<size_t>( nNode )] = true;
			m_nLeftOut++;
			if ( const int32_t nChild = file.GetNodeFirstChild( nNode ); nChild >= 0 )
				chains.push_back( nChild );
		}
	}
}
