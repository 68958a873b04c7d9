// The list of connections as a table.
#pragma once

#include <QAbstractTableModel>

class CConnectionList;
class CTargetConnection;

class CConnectionsModel final : public QAbstractTableModel
{
	Q_OBJECT

public:
	enum Column
	{
		NameColumn,
		AddressColumn,
		StateColumn,
		ChunksColumn,
		BytesColumn,
		DroppedColumn,
		ColumnCount
	};

	// list must outlive the model.
	explicit CConnectionsModel( CConnectionList &list, QObject *pParent = nullptr );

	CTargetConnection *ConnectionAt( const QModelIndex &index ) const; // null for an invalid index

	int rowCount( const QModelIndex &parent = {} ) const override;
	int columnCount( const QModelIndex &parent = {} ) const override;
	QVariant data( const QModelIndex &index, int nRole ) const override;
	QVariant headerData( int nSection, Qt::Orientation orientation, int nRole ) const override;

private:
	QVariant DisplayText( const CTargetConnection &connection, int nColumn ) const;

	CConnectionList &m_List;
};

// "Connected", "Stalled: nothing for 7 s", "Connecting…", "Retrying: connection refused", "Disconnected".
QString DescribeState( const CTargetConnection &connection );
