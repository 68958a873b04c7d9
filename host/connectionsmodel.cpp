#include "connectionsmodel.h"

#include <QColor>
#include <QGuiApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>

#include "connectionlist.h"
#include "displaytext.h"
#include "targetconnection.h"

namespace
{
QColor StateColour( const CTargetConnection &connection )
{
	switch ( connection.GetState() )
	{
		case CTargetConnection::Connected:
			return connection.IsStalled() ? QColor( 0xffd9962b ) : QColor( 0xff3fa55b );
		case CTargetConnection::Idle:
			return QColor( 0xff8a8f98 );
		default:
			return connection.Problem().isEmpty() ? QColor( 0xff3f86d8 ) : QColor( 0xffd9962b );
	}
}

QIcon StateIcon( const QColor &colour )
{
	const qreal flRatio = qGuiApp->devicePixelRatio();
	QPixmap pixmap( QSize( 16, 16 ) * flRatio );
	pixmap.setDevicePixelRatio( flRatio );
	pixmap.fill( Qt::transparent );
	QPainter painter( &pixmap );
	painter.setRenderHint( QPainter::Antialiasing );
	painter.setPen( Qt::NoPen );
	painter.setBrush( colour );
	painter.drawEllipse( QRectF( 3.5, 3.5, 9, 9 ) );
	// Without one of its own the selected row would tint the picture.
	QIcon icon;
	icon.addPixmap( pixmap, QIcon::Normal );
	icon.addPixmap( pixmap, QIcon::Selected );
	return icon;
}
QString DescribeRetry( const CTargetConnection &connection )
{
	const int nMilliseconds = connection.MillisecondsToRetry();
	return nMilliseconds < 0
			   ? QString()
			   : CConnectionsModel::tr( " (next attempt in %1 s)" ).arg( nMilliseconds / 1000.0, 0, 'f', 1 );
}
} // namespace

CConnectionsModel::CConnectionsModel( CConnectionList &list, QObject *pParent )
	: QAbstractTableModel( pParent )
	, m_List( list )
{
	connect(
		&list, &CConnectionList::AboutToAdd, this, [this]( int nIndex ) { beginInsertRows( {}, nIndex, nIndex ); } );
	connect( &list, &CConnectionList::Added, this, [this]() { endInsertRows(); } );
	connect(
		&list, &CConnectionList::AboutToRemove, this, [this]( int nIndex ) { beginRemoveRows( {}, nIndex, nIndex ); } );
	connect( &list, &CConnectionList::Removed, this, [this]() { endRemoveRows(); } );
	connect( &list, &CConnectionList::Changed, this,
		[this]( CTargetConnection *pConnection )
		{
			const int nRow = m_List.IndexOf( pConnection );
			if ( nRow >= 0 )
				emit dataChanged( index( nRow, 0 ), index( nRow, ColumnCount - 1 ) );
		} );
}

CTargetConnection *CConnectionsModel::ConnectionAt( const QModelIndex &index ) const
{
	return index.isValid() ? m_List.At( index.row() ) : nullptr;
}

int CConnectionsModel::rowCount( const QModelIndex &parent ) const
{
	return parent.isValid() ? 0 : m_List.Count();
}

int CConnectionsModel::columnCount( const QModelIndex &parent ) const
{
	return parent.isValid() ? 0 : ColumnCount;
}

QVariant CConnectionsModel::data( const QModelIndex &index, int nRole ) const
{
	const CTargetConnection &connection = *m_List.At( index.row() );
	if ( nRole == Qt::DisplayRole )
		return DisplayText( connection, index.column() );
	if ( nRole == Qt::TextAlignmentRole && index.column() >= ChunksColumn )
		return static_cast<int>( Qt::AlignRight | Qt::AlignVCenter );
	if ( nRole == Qt::DecorationRole && index.column() == NameColumn )
		return StateIcon( StateColour( connection ) );
	if ( nRole == Qt::ToolTipRole && index.column() <= StateColumn )
		return ToToolTip( DisplayText( connection, index.column() ).toString() + DescribeRetry( connection ) );
	return {};
}

QVariant CConnectionsModel::DisplayText( const CTargetConnection &connection, int nColumn ) const
{
	const bool bConnected = connection.IsConnected();
	switch ( nColumn )
	{
		case NameColumn:
			return connection.Name();
		case AddressColumn:
			return connection.Address().ToString();
		case StateColumn:
			return DescribeState( connection );
		case ChunksColumn:
			return bConnected ? QString::number( connection.Traffic().ChunksPerSecond(), 'f', 0 ) : QString();
		case BytesColumn:
			return bConnected ? FormatByteRate( connection.Traffic().BytesPerSecond() ) : QString();
		default:
			return bConnected ? QString::number( connection.DroppedFrames() ) : QString();
	}
}

QVariant CConnectionsModel::headerData( int nSection, Qt::Orientation orientation, int nRole ) const
{
	if ( orientation != Qt::Horizontal )
		return {};
	if ( nRole == Qt::TextAlignmentRole )
		return static_cast<int>( ( nSection >= ChunksColumn ? Qt::AlignRight : Qt::AlignLeft ) | Qt::AlignVCenter );
	if ( nRole == Qt::ToolTipRole && nSection == DroppedColumn )
		return tr( "Frames that the engine left out because this console read too slowly" );
	if ( nRole != Qt::DisplayRole )
		return {};
	switch ( nSection )
	{
		case NameColumn:
			return tr( "Engine" );
		case AddressColumn:
			return tr( "Address" );
		case StateColumn:
			return tr( "State" );
		case ChunksColumn:
			return tr( "Chunks/s" );
		case BytesColumn:
			return tr( "Traffic" );
		default:
			return tr( "Dropped frames" );
	}
}

QString DescribeState( const CTargetConnection &connection )
{
	switch ( connection.GetState() )
	{
		case CTargetConnection::Connected:
			return connection.IsStalled() ? CConnectionsModel::tr( "Stalled: nothing for %1 s" )
												.arg( connection.SilentSeconds(), 0, 'f', 0 )
										  : CConnectionsModel::tr( "Connected" );
		case CTargetConnection::Idle:
			return CConnectionsModel::tr( "Disconnected" );
		default:
			// Between attempts that fail for one reason the text stays, so that it does not flicker.
			return connection.Problem().isEmpty() ? CConnectionsModel::tr( "Connecting\u2026" )
												  : CConnectionsModel::tr( "Retrying: %1" ).arg( connection.Problem() );
	}
}
