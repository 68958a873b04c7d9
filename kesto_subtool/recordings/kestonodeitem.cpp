#include "recordings/kestonodeitem.h"

#include <QTreeWidget>
#include <limits>

#include "recordings/kestotexts.h"

CKestoNodeItem::CKestoNodeItem( const CKestoFile &file, int32_t nNode, int32_t nRow )
	: QTreeWidgetItem( UserType )
	, m_File( file )
	, m_nNode( nNode )
	, m_nRow( nRow )
{
	setText( COLUMN_NAME, NodeNameText( file, nNode ) );
	setData( COLUMN_NAME, Qt::UserRole, nNode );
	for ( int nColumn = COLUMN_INCLUSIVE; nColumn < COLUMN_COUNT; nColumn++ )
		setTextAlignment( nColumn, Qt::AlignRight | Qt::AlignVCenter );
}

void CKestoNodeItem::SetFrame( CKestoFile::CTickTimings &frame, CChildTimes &childTimes )
{
	m_Entry = frame.GetEntry( m_nNode );
	if ( IsEmpty() )
		return;
	m_nExclusive = static_cast<int32_t>( m_Entry.m_nTime - static_cast<uint32_t>( childTimes.Of( m_nNode ) ) );
	m_bHasToolTip = true;
}

QVariant CKestoNodeItem::data( int nColumn, int nRole ) const
{
	if ( nRole == Qt::DisplayRole && nColumn > COLUMN_NAME && nColumn < COLUMN_COUNT )
		return GetFigureText( nColumn );
	if ( nRole == Qt::ToolTipRole && nColumn == COLUMN_INCLUSIVE && m_bHasToolTip )
		return NodeToolTip( m_File, m_nNode );
	if ( nRole == Qt::ToolTipRole && nColumn == COLUMN_NAME ) // where the column cuts it off
		return ToolTipText( NodeNameText( m_File, m_nNode ) );
	return QTreeWidgetItem::data( nColumn, nRole );
}

QString CKestoNodeItem::GetFigureText( int nColumn ) const
{
	if ( IsEmpty() )
		return QString();
	if ( nColumn == COLUMN_CALLS )
		return QString::number( m_Entry.m_nCalls );
	const int32_t nTime = nColumn == COLUMN_INCLUSIVE ? static_cast<int32_t>( m_Entry.m_nTime ) : m_nExclusive;
	return nTime == 0 ? QStringLiteral( "-" ) : FormatMilliseconds( nTime );
}

int64_t CKestoNodeItem::GetFigure( int nColumn ) const
{
	constexpr int64_t EMPTY = std::numeric_limits<int64_t>::min();
	if ( IsEmpty() )
		return EMPTY;
	if ( nColumn == COLUMN_CALLS )
		return m_Entry.m_nCalls;
	const int32_t nTime = nColumn == COLUMN_INCLUSIVE ? static_cast<int32_t>( m_Entry.m_nTime ) : m_nExclusive;
	return nTime == 0 ? EMPTY + 1 : nTime;
}

bool CKestoNodeItem::operator<( const QTreeWidgetItem &other ) const
{
	const int nColumn = treeWidget() ? treeWidget()->sortColumn() : COLUMN_NAME;
	if ( nColumn <= COLUMN_NAME )
		return text( COLUMN_NAME ).localeAwareCompare( other.text( COLUMN_NAME ) ) < 0;
	return GetFigure( nColumn ) < static_cast<const CKestoNodeItem &>( other ).GetFigure( nColumn );
}
