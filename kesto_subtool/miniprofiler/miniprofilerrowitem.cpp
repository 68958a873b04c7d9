#include "miniprofiler/miniprofilerrowitem.h"

#include <QBrush>
#include <QSize>

#include "miniprofiler/miniprofilertooltip.h"
#include "miniprofiler/miniprofilertreewidget.h"

CQMiniProfilerRowItem::CQMiniProfilerRowItem( CMiniProfilerRow &row )
	: QTreeWidgetItem( UserType )
	, m_Row( row )
{
	m_Row.m_pItem = this;
}

CQMiniProfilerRowItem::~CQMiniProfilerRowItem()
{
	m_Row.m_pItem = nullptr;
}

QVariant CQMiniProfilerRowItem::data( int nColumn, int nRole ) const
{
	switch ( nRole )
	{
		case Qt::UserRole:
			return QVariant::fromValue( &m_Row );
		case Qt::DisplayRole:
			return nColumn == MINIPROFILER_NAME ? m_Row.Name() : QVariant();
		case Qt::ToolTipRole:
		{
			const CQMiniProfilerRecord *pRecord = AsRecord( &m_Row );
			return pRecord && nColumn == MINIPROFILER_NAME ? MiniProfilerToolTip( pRecord->Description() ) : QVariant();
		}
		case Qt::ForegroundRole:
			if ( nColumn == MINIPROFILER_EXCLUSIVE || nColumn == MINIPROFILER_EXCLUSIVE_CALL )
				return QBrush( Qt::black );
			if ( nColumn == MINIPROFILER_INCLUSIVE || nColumn == MINIPROFILER_INCLUSIVE_CALL )
				return QBrush( Qt::gray );
			return QVariant();
		case Qt::SizeHintRole: // or the view lays the whole name out to measure it
			return treeWidget() ? QSize( 0, treeWidget()->fontMetrics().height() ) : QVariant();
		default:
			return QTreeWidgetItem::data( nColumn, nRole );
	}
}

bool CQMiniProfilerRowItem::operator<( const QTreeWidgetItem &other ) const
{
	const auto *pTree = static_cast<const CQMiniProfilerTreeWidget *>( treeWidget() );
	if ( pTree && pTree->SortsByKeys() )
		return m_flSortKey < static_cast<const CQMiniProfilerRowItem &>( other ).m_flSortKey;
	const CMiniProfilerRow &otherRow = RowOf( other );
	const int nColumn = pTree ? pTree->sortColumn() : MINIPROFILER_NAME;
	if ( nColumn <= MINIPROFILER_NAME || nColumn >= static_cast<int>( MINIPROFILER_COLUMNS ) )
		return m_Row.Name() < otherRow.Name();
	const auto nIndex = static_cast<size_t>( nColumn );
	return m_Row.Array( pTree->SortArray() )[nIndex] < otherRow.Array( pTree->SortArray() )[nIndex];
}
