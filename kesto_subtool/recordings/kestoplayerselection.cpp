// The player's selection: tree, flame graph and filter.
#include <QCursor>
#include <QLineEdit>
#include <QToolTip>
#include <QTreeWidget>
#include <algorithm>

#include "recordings/flamegraphwidget.h"
#include "recordings/kestonodeitem.h"
#include "recordings/kestoplayerwidget.h"
#include "text/wildcardpattern.h"

static constexpr size_t MAX_FILTERED = 200; // items that a filter selects at most

static void ExpandAncestors( const QTreeWidgetItem &item )
{
	for ( QTreeWidgetItem *pParent = item.parent(); pParent; pParent = pParent->parent() )
		pParent->setExpanded( true );
}

void CQKestoPlayerWidget::OnFilterChanged( const QString &text )
{
	const CWildcardPattern filter( text );
	const std::vector<bool> isSelected = GetSelectedRows();
	std::vector<CKestoNodeItem *> toDeselect;
	std::vector<CKestoNodeItem *> toSelect;
	for ( size_t i = 1; i < m_NodeItems.size(); i++ )
	{
		const bool bMatches = filter.Matches( m_NodeItems[i]->text( CKestoNodeItem::COLUMN_NAME ) );
		if ( bMatches != isSelected[i] )
			( bMatches ? toSelect : toDeselect ).push_back( m_NodeItems[i] );
	}
	if ( toSelect.size() > MAX_FILTERED )
	{
		const int nItems = static_cast<int>( toSelect.size() );
		QToolTip::showText( QCursor::pos(), QString::asprintf( "too many (%d) items matched", nItems ), m_pFilter );
		return;
	}
	QToolTip::hideText();
	{
		// One change of the selection, not one per item.
		const QSignalBlocker blocker( m_pNodeTree );
		for ( CKestoNodeItem *pItem : toDeselect )
			pItem->setSelected( false );
		for ( CKestoNodeItem *pItem : toSelect )
		{
			ExpandAncestors( *pItem );
			pItem->setSelected( true );
		}
	}
	if ( !toDeselect.empty() || !toSelect.empty() )
		OnTreeSelectionChanged();
	// The first by its id and not by its row: deliberate.
	if ( !toSelect.empty() )
		m_pNodeTree->scrollToItem( *std::ranges::min_element( toSelect, {}, &CKestoNodeItem::GetNode ) );
}

CKestoNodeItem *CQKestoPlayerWidget::GetItemOf( int32_t nNode ) const
{
	const int32_t nRow = m_pRows ? m_pRows->RowOf( nNode ) : -1;
	return nRow < 0 ? nullptr : m_NodeItems[static_cast<size_t>( nRow )];
}

// By row. The tree is asked once for everything that is selected: asking it row by row is quadratic when a large tree
// is selected as a whole.
std::vector<bool> CQKestoPlayerWidget::GetSelectedRows() const
{
	std::vector<bool> isSelected( m_NodeItems.size() );
	for ( const QTreeWidgetItem *pItem : m_pNodeTree->selectedItems() )
		isSelected[static_cast<size_t>( static_cast<const CKestoNodeItem *>( pItem )->GetRow() )] = true;
	return isSelected;
}

// A node that is in several rows is selected when any of them is.
void CQKestoPlayerWidget::OnTreeSelectionChanged()
{
	if ( !m_pRows )
		return;
	std::vector<bool> isSelected = GetSelectedRows();
	for ( size_t i = 1; i < m_NodeItems.size(); i++ )
		if ( isSelected[i] )
			isSelected[static_cast<size_t>( m_pRows->RowOf( m_NodeItems[i]->GetNode() ) )] = true;
	for ( size_t i = 1; i < m_NodeItems.size(); i++ )
	{
		const int32_t nNode = m_NodeItems[i]->GetNode();
		if ( m_pRows->RowOf( nNode ) == static_cast<int32_t>( i ) )
			m_pFlamegraph->SetSelected( nNode, isSelected[i] );
	}
}

// Every row of a node goes out of the selection with it; into it, the one that stands for the node is enough.
void CQKestoPlayerWidget::OnSelectedChanged( int nNodeId, bool bSelected )
{
	CKestoNodeItem *pItem = GetItemOf( nNodeId );
	if ( !pItem || pItem->isSelected() == bSelected )
		return;
	if ( !bSelected )
		for ( int32_t nRow = pItem->GetRow(); nRow > 0; nRow = ( *m_pRows )[nRow].m_nEarlierRowOfNode )
			m_NodeItems[static_cast<size_t>( nRow )]->setSelected( false );
	else
	{
		ExpandAncestors( *pItem );
		pItem->setSelected( true );
		m_pNodeTree->scrollToItem( pItem );
	}
}

void CQKestoPlayerWidget::OnNodeTreeItemClicked( const QPoint &pos )
{
	const QTreeWidgetItem *pItem = m_pNodeTree->itemAt( pos );
	if ( !pItem || !m_pFile )
		return;
	bool bIsInt = false;
	const int nNode = pItem->data( CKestoNodeItem::COLUMN_NAME, Qt::UserRole ).toInt( &bIsInt );
	if ( bIsInt && nNode >= 0 && nNode < m_pFile->GetNodeCount() )
		OnItemContextMenu( nNode, m_pNodeTree->mapToGlobal( pos ) );
}
