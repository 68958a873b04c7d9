#include "miniprofiler/miniprofilertreewidget.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSet>
#include <QTreeWidgetItemIterator>
#include <algorithm>
#include <cmath>

#include "miniprofiler/miniprofilermodel.h"
#include "miniprofiler/miniprofilerrowitem.h"

CQMiniProfilerTreeWidget::CQMiniProfilerTreeWidget( QWidget *pParent )
	: QTreeWidget( pParent )
{
	qRegisterMetaType<CMiniProfilerRow *>( "CMiniProfilerRow*" );
	setColumnCount( static_cast<int>( MINIPROFILER_COLUMNS ) );
	setUniformRowHeights( true ); // or laying out 10,000 rows measures every one
	setSelectionMode( ExtendedSelection );
	setContextMenuPolicy( Qt::CustomContextMenu );
	viewport()->setAttribute( Qt::WA_Hover );
	header()->setSortIndicator( MINIPROFILER_INCLUSIVE, Qt::DescendingOrder ); // the heaviest first
	setSortingEnabled( true );
	header()->setStretchLastSection( false ); // the first one takes the rest
	connect( header(), SIGNAL( sectionResized( int, int, int ) ), SLOT( OnSectionResized() ) );
}

// The items let go of their rows while those are still there.
CQMiniProfilerTreeWidget::~CQMiniProfilerTreeWidget()
{
	clear();
}

void CQMiniProfilerTreeWidget::SetHeaderTexts( const QStringList &texts )
{
	for ( int i = 0; i < texts.size(); i++ )
		if ( headerItem()->text( i ) != texts[i] )
			headerItem()->setText( i, texts[i] );
}

void CQMiniProfilerTreeWidget::SetStartWidths( const QStringList &labels )
{
	constexpr int LONG_NAME_CHARACTERS = 44;
	const QFontMetrics metrics( header()->font() );
	const int nMargin = 4 * metrics.horizontalAdvance( 'x' );
	m_nLongName = LONG_NAME_CHARACTERS * metrics.horizontalAdvance( 'x' );
	m_bFitting = true;
	for ( int i = MINIPROFILER_CALLS; i < labels.size(); i++ )
		setColumnWidth( i, metrics.horizontalAdvance( labels[i] ) + nMargin );
	m_bFitting = false;
	FitNames();
}

void CQMiniProfilerTreeWidget::FitNames()
{
	if ( m_bUserWidths )
		return;
	int nRest = viewport()->width();
	for ( int i = MINIPROFILER_CALLS; i < columnCount(); i++ )
		nRest -= columnWidth( i );
	m_bFitting = true;
	setColumnWidth( MINIPROFILER_NAME, std::max( nRest, m_nLongName ) );
	m_bFitting = false;
}

// With the indentation, and with room for a group's count.
int CQMiniProfilerTreeWidget::NameWidth( CMiniProfilerRow &row ) const
{
	constexpr int COUNT_WIDTH = 28;
	int nLevels = rootIsDecorated() ? 1 : 0;
	for ( const CMiniProfilerRow *pParent = row.m_pTreeParent; pParent; pParent = pParent->m_pTreeParent )
		nLevels++;
	return nLevels * indentation() + static_cast<int>( std::ceil( row.LaidOutName( font() ).size().width() ) ) +
		   COUNT_WIDTH;
}

int CQMiniProfilerTreeWidget::sizeHintForColumn( int nColumn ) const
{
	const QFontMetrics metrics = fontMetrics();
	const int nMargin = metrics.horizontalAdvance( 'x' );
	int nWidth = 0;
	for ( CMiniProfilerRow *pRow : VisibleRows() )
		nWidth = std::max(
			nWidth, nColumn == MINIPROFILER_NAME
						? NameWidth( *pRow )
						: metrics.horizontalAdvance( MiniProfilerNumberText( *pRow, nColumn, m_Numbers ).m_Text ) );
	return nWidth + nMargin;
}

void CQMiniProfilerTreeWidget::OnSectionResized()
{
	m_bUserWidths = m_bUserWidths || !m_bFitting;
}

void CQMiniProfilerTreeWidget::resizeEvent( QResizeEvent *pEvent )
{
	QTreeWidget::resizeEvent( pEvent );
	FitNames();
}

void CQMiniProfilerTreeWidget::OpenContextMenu( const QPoint &ptGlobal )
{
	// Not exec(): rows, and the window too, may end while the menu is open.
	if ( m_pContextMenu && !m_pContextMenu->isVisible() )
		m_pContextMenu->popup( ptGlobal );
}

void CQMiniProfilerTreeWidget::mousePressEvent( QMouseEvent *pEvent )
{
	if ( pEvent->button() == Qt::RightButton )
		OpenContextMenu( pEvent->globalPos() );
	else
		QTreeWidget::mousePressEvent( pEvent );
}

void CQMiniProfilerTreeWidget::keyPressEvent( QKeyEvent *pEvent )
{
	if ( pEvent->matches( QKeySequence::Copy ) )
		emit CopyRequested();
	else if ( pEvent->key() == Qt::Key_Up && pEvent->modifiers() == Qt::AltModifier && currentItem() )
		emit JumpToParentRequested( currentItem() );
	else
	{
		QTreeWidget::keyPressEvent( pEvent );
		return;
	}
	pEvent->accept();
}

void CQMiniProfilerTreeWidget::paintEvent( QPaintEvent *pEvent )
{
	QTreeWidget::paintEvent( pEvent );
	if ( topLevelItemCount() > 0 )
		return;
	QPainter painter( viewport() );
	painter.setPen( palette().color( QPalette::Disabled, QPalette::Text ) );
	painter.drawText( viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap,
		tr( "No scopes of the engine have been received yet." ) );
}

bool CQMiniProfilerTreeWidget::IsInOrder( const QTreeWidgetItem &parent, bool bAscending ) const
{
	for ( int i = 0; i < parent.childCount(); i++ )
	{
		const QTreeWidgetItem *pChild = parent.child( i );
		if ( i > 0 )
		{
			const QTreeWidgetItem *pBefore = parent.child( i - 1 );
			if ( bAscending ? *pChild < *pBefore : *pBefore < *pChild )
				return false;
		}
		if ( pChild->childCount() > 0 && !IsInOrder( *pChild, bAscending ) )
			return false;
	}
	return true;
}

void CQMiniProfilerTreeWidget::SetSortKeys( const QTreeWidgetItem &parent, size_t nColumn ) const
{
	for ( int i = 0; i < parent.childCount(); i++ )
	{
		auto &child = static_cast<CQMiniProfilerRowItem &>( *parent.child( i ) );
		child.SetSortKey( child.Row().Array( m_Numbers.SortArray() )[nColumn] );
		SetSortKeys( child, nColumn );
	}
}

void CQMiniProfilerTreeWidget::RestoreOrder()
{
	if ( !isSortingEnabled() )
		return;
	m_bSortsByKeys = sortColumn() > MINIPROFILER_NAME;
	if ( m_bSortsByKeys )
		SetSortKeys( *invisibleRootItem(), static_cast<size_t>( sortColumn() ) );
	const Qt::SortOrder order = header()->sortIndicatorOrder();
	if ( !IsInOrder( *invisibleRootItem(), order == Qt::AscendingOrder ) )
		model()->sort( sortColumn(), order );
	m_bSortsByKeys = false;
}

std::vector<CMiniProfilerRow *> CQMiniProfilerTreeWidget::VisibleRows() const
{
	std::vector<CMiniProfilerRow *> rows;
	const QRect area = viewport()->rect();
	for ( const QTreeWidgetItem *pItem = itemAt( area.topLeft() ); pItem && visualItemRect( pItem ).intersects( area );
		  pItem = itemBelow( pItem ) )
		rows.push_back( &RowOf( *pItem ) );
	return rows;
}

std::vector<CMiniProfilerRow *> CQMiniProfilerTreeWidget::RowsInOrder() const
{
	std::vector<CMiniProfilerRow *> rows;
	for ( QTreeWidgetItemIterator i( const_cast<CQMiniProfilerTreeWidget *>( this ) ); *i; ++i )
		rows.push_back( &RowOf( **i ) );
	return rows;
}

// An item that is asked whether it is selected looks itself up among all of its siblings; these come as ranges of rows.
std::vector<CMiniProfilerRow *> CQMiniProfilerTreeWidget::SelectedRowsInAnyOrder() const
{
	std::vector<CMiniProfilerRow *> rows;
	for ( const QItemSelectionRange &range : selectionModel()->selection() )
		for ( int i = range.top(); i <= range.bottom(); i++ )
			rows.push_back( &RowOf( *itemFromIndex( model()->index( i, 0, range.parent() ) ) ) );
	return rows;
}

std::vector<CMiniProfilerRow *> CQMiniProfilerTreeWidget::SelectedRows() const
{
	std::vector<CMiniProfilerRow *> rows = SelectedRowsInAnyOrder();
	if ( rows.size() < 2 )
		return rows;
	const QSet<CMiniProfilerRow *> selected( rows.begin(), rows.end() );
	rows = RowsInOrder();
	std::erase_if( rows, [&]( CMiniProfilerRow *pRow ) { return !selected.contains( pRow ); } );
	return rows;
}

// Neighbours become one range: thousands of ranges would be slow to compare.
QItemSelection CQMiniProfilerTreeWidget::SelectionOf( const std::vector<CMiniProfilerRow *> &rows ) const
{
	const int nLastColumn = columnCount() - 1;
	QItemSelection selection;
	QModelIndex first, last;
	const auto EndRun = [&]
	{
		if ( first.isValid() )
			selection.append( QItemSelectionRange( first, last.sibling( last.row(), nLastColumn ) ) );
	};
	for ( const CMiniProfilerRow *pRow : rows )
	{
		const QModelIndex index = indexFromItem( pRow->m_pItem );
		if ( !first.isValid() || index.row() != last.row() + 1 || index.parent() != last.parent() )
		{
			EndRun();
			first = index;
		}
		last = index;
	}
	EndRun();
	return selection;
}

void CQMiniProfilerTreeWidget::SelectRows( const std::vector<CMiniProfilerRow *> &rows )
{
	const QTreeWidgetItem *pOpened = nullptr; // with all above it: rows of one family follow each other
	for ( const CMiniProfilerRow *pRow : rows )
	{
		QTreeWidgetItem *const pFamily = pRow->m_pItem->parent();
		for ( QTreeWidgetItem *pParent = pFamily; pParent && pParent != pOpened; pParent = pParent->parent() )
			pParent->setExpanded( true );
		pOpened = pFamily;
	}
	if ( !rows.empty() )
		scrollToItem( rows.front()->m_pItem );
	// Last, since whoever hears of it may clear the tree.
	selectionModel()->select( SelectionOf( rows ), QItemSelectionModel::ClearAndSelect );
}

// -- Following the model

struct CQMiniProfilerTreeWidget::PlacesKept
{
	std::vector<CMiniProfilerRow *> m_Expanded;
	std::vector<CMiniProfilerRow *> m_Selected;
	CMiniProfilerRow *m_pCurrent = nullptr;
	int m_nScrollX = 0;
	int m_nScrollY = 0;
};

namespace
{
// More moves than this are made with all items taken out, where a move costs next to nothing.
constexpr size_t MAX_SINGLE_MOVES = 64;

void CollectRows( const QTreeWidgetItem &item, std::vector<CMiniProfilerRow *> &rows )
{
	rows.push_back( &RowOf( item ) );
	for ( int i = 0; i < item.childCount(); i++ )
		CollectRows( *item.child( i ), rows );
}
} // namespace

// An item that is taken out of the tree loses all this, and what hangs below it does too.
CQMiniProfilerTreeWidget::PlacesKept CQMiniProfilerTreeWidget::KeepPlaces(
	const std::vector<CMiniProfilerRow *> &rows ) const
{
	PlacesKept places;
	places.m_nScrollX = horizontalScrollBar()->value();
	places.m_nScrollY = verticalScrollBar()->value();
	if ( currentItem() )
		places.m_pCurrent = &RowOf( *currentItem() );
	for ( CMiniProfilerRow *pRow : rows )
		if ( pRow->m_pItem->childCount() > 0 && pRow->m_pItem->isExpanded() )
			places.m_Expanded.push_back( pRow );
	places.m_Selected = SelectedRowsInAnyOrder();
	return places;
}

void CQMiniProfilerTreeWidget::RestorePlaces( PlacesKept &places )
{
	for ( const CMiniProfilerRow *pRow : places.m_Expanded )
		if ( pRow->m_pItem )
			pRow->m_pItem->setExpanded( true );
	std::erase_if( places.m_Selected, []( const CMiniProfilerRow *pRow ) { return !pRow->m_pItem; } );
	if ( !places.m_Selected.empty() )
		selectionModel()->select( SelectionOf( places.m_Selected ), QItemSelectionModel::Select );
	if ( places.m_pCurrent && places.m_pCurrent->m_pItem && currentItem() != places.m_pCurrent->m_pItem )
		selectionModel()->setCurrentIndex( indexFromItem( places.m_pCurrent->m_pItem ), QItemSelectionModel::NoUpdate );
	if ( places.m_nScrollY == 0 && verticalScrollBar()->value() == 0 )
		return;
	executeDelayedItemsLayout(); // or the scroll bars do not reach that far yet
	horizontalScrollBar()->setValue( places.m_nScrollX );
	verticalScrollBar()->setValue( places.m_nScrollY );
}

void CQMiniProfilerTreeWidget::TakeItem( QTreeWidgetItem &item )
{
	QTreeWidgetItem *pParent = item.parent() ? item.parent() : invisibleRootItem();
	pParent->takeChild( pParent->indexOfChild( &item ) );
}

// The top level last: what is put together outside the tree costs the view nothing.
void CQMiniProfilerTreeWidget::InsertItems( const std::vector<CMiniProfilerRow *> &rows )
{
	for ( const CMiniProfilerRow *pRow : rows )
		if ( pRow->m_pTreeParent )
			pRow->m_pTreeParent->m_pItem->addChild( pRow->m_pItem );
	for ( const CMiniProfilerRow *pRow : rows )
		if ( !pRow->m_pTreeParent )
			addTopLevelItem( pRow->m_pItem );
}

void CQMiniProfilerTreeWidget::MoveSome( Changes changes )
{
	for ( const CMiniProfilerRow *pRow : changes.m_Moved )
		TakeItem( *pRow->m_pItem );
	DeleteItems( changes.m_RemovedGroups );
	std::vector<CMiniProfilerRow *> rows = std::move( changes.m_New );
	rows.insert( rows.end(), changes.m_Moved.begin(), changes.m_Moved.end() );
	InsertItems( rows );
}

void CQMiniProfilerTreeWidget::MoveAll( const Changes &changes, const CMiniProfilerModel &model )
{
	std::vector<CMiniProfilerRow *> rows;
	rows.reserve( model.Groups().size() + model.Records().size() );
	for ( const auto &pGroup : model.Groups() )
		rows.push_back( pGroup.get() );
	for ( const auto &pRecord : model.Records() )
		rows.push_back( pRecord.get() );

	invisibleRootItem()->takeChildren();
	for ( const CMiniProfilerRow *pRow : rows )
		pRow->m_pItem->takeChildren();
	for ( const auto &pGroup : changes.m_RemovedGroups )
		if ( pGroup->m_pItem )
			pGroup->m_pItem->takeChildren();
	DeleteItems( changes.m_RemovedGroups );
	InsertItems( rows );
}

// An item that goes with its parent's is null by the time that it would be deleted itself.
void CQMiniProfilerTreeWidget::DeleteItems( const std::vector<std::unique_ptr<CMiniProfilerGroup>> &groups )
{
	for ( const auto &pGroup : groups )
		delete pGroup->m_pItem;
}

CQMiniProfilerTreeWidget::Changes CQMiniProfilerTreeWidget::TakeChanges( CMiniProfilerModel &model )
{
	Changes changes;
	changes.m_RemovedGroups = model.TakeRemovedGroups();
	for ( CMiniProfilerRow *pRow : model.TakeChanges() )
	{
		if ( !pRow->m_pItem )
		{
			new CQMiniProfilerRowItem( *pRow ); // the row knows it, and the tree will own it
			changes.m_New.push_back( pRow );
		}
		else if ( pRow->m_nChanges & MINIPROFILER_ROW_MOVED )
			changes.m_Moved.push_back( pRow );
		else if ( pRow->m_nChanges & MINIPROFILER_ROW_RENAMED )
			changes.m_Renamed.push_back( pRow );
		pRow->m_nChanges = 0;
	}
	return changes;
}

void CQMiniProfilerTreeWidget::Follow( CMiniProfilerModel &model )
{
	if ( !model.HasChanges() )
		return;
	Changes changes = TakeChanges( model );
	for ( const CMiniProfilerRow *pRow : changes.m_Renamed )
		pRow->m_pItem->NotifyRenamed();

	const bool bAll = changes.m_Moved.size() + changes.m_RemovedGroups.size() > MAX_SINGLE_MOVES;
	std::vector<CMiniProfilerRow *> uprooted;
	if ( bAll )
		uprooted = RowsInOrder();
	else
		for ( const CMiniProfilerRow *pRow : changes.m_Moved )
			CollectRows( *pRow->m_pItem, uprooted );
	PlacesKept places = KeepPlaces( uprooted );

	const QSignalBlocker blocker( this ); // nobody need see the selection go and come back
	if ( bAll )
		MoveAll( changes, model );
	else
		MoveSome( std::move( changes ) );
	RestorePlaces( places );
}
