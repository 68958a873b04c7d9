#include "tools/nodechoice.h"

#include "tools/text.h"

std::vector<int32_t> ChooseNodes( const CNodeTree &tree, const std::string &name )
{
	const std::string latin1 = Utf8ToLatin1( name ).value_or( name );
	std::vector<int32_t> nodes;
	std::vector<bool> covered; // by row: it or one above it was chosen
	covered.reserve( tree.Rows().size() );
	for ( const CNodeTree::Row &row : tree.Rows() )
	{
		const bool bAbove = row.m_nParentRow >= 0 && covered[static_cast<size_t>( row.m_nParentRow )];
		const bool bNamed = tree.IsNamed( row, name ) || tree.IsNamed( row, latin1 );
		if ( bNamed && !bAbove )
			nodes.push_back( row.m_nNode );
		covered.push_back( bNamed || bAbove );
	}
	return nodes;
}
