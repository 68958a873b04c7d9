#include "recordings/noderows.h"

#include <algorithm>

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
	std::vector<int32_t> leftOut;
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
		for ( int32_t n = nChild; n >= 0; n = file.GetNodeNextSibling( n ) )
			leftOut.push_back( n );
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
		levels.back().m_nNextChild = file.GetNodeNextSibling( nChild );
		if ( Count() < limits.m_nRows )
			descend( nChild, levels.back().m_nRow );
		else
			leftOut.push_back( nChild );
	}
	CountLeftOut( file, leftOut );
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

// Everything that hangs below what was left out, without asking how often.
void NodeRows::CountLeftOut( const CKestoFile &file, const std::vector<int32_t> &starts )
{
	std::vector<bool> counted( m_LastRows.size() );
	std::vector<int32_t> todo;
	const auto add = [&]( int32_t nNode )
	{
		if ( counted[static_cast<size_t>( nNode )] )
			return;
		counted[static_cast<size_t>( nNode )] = true;
		m_nLeftOut++;
		todo.push_back( nNode );
	};
	for ( const int32_t nStart : starts )
	{
		add( nStart );
		while ( !todo.empty() )
		{
			const int32_t nNode = todo.back();
			todo.pop_back();
			for ( int32_t n = file.GetNodeFirstChild( nNode ); n >= 0; n = file.GetNodeNextSibling( n ) )
				add( n );
		}
	}
}
