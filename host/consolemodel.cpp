#include "consolemodel.h"

#include "displaytext.h"
#include "style.h"

CConsoleModel::CConsoleModel( int nLineLimit, QObject *pParent )
	: QAbstractTableModel( pParent )
	, m_Lines( nLineLimit )
{
}

void CConsoleModel::Append( CNewestLines lines )
{
	lines.LimitAs( m_Lines );
	if ( lines.Count() == 0 )
		return;
	if ( const int nGone = m_Lines.CountThatGoFor( lines ); nGone > 0 )
	{
		beginRemoveRows( {}, 0, nGone - 1 );
		m_Lines.RemoveOldest( nGone );
		endRemoveRows();
	}
	beginInsertRows( {}, m_Lines.Count(), m_Lines.Count() + lines.Count() - 1 );
	m_Lines.Append( std::move( lines ) );
	endInsertRows();
}

void CConsoleModel::Clear()
{
	beginResetModel();
	m_Lines.Clear();
	endResetModel();
}

void CConsoleModel::SetDarkStyle( bool bDark )
{
	m_bDark = bDark;
	if ( m_Lines.Count() > 0 )
		emit dataChanged( index( 0, 0 ), index( rowCount() - 1, ColumnCount - 1 ), { Qt::ForegroundRole } );
}

int CConsoleModel::rowCount( const QModelIndex &parent ) const
{
	return parent.isValid() ? 0 : m_Lines.Count();
}

int CConsoleModel::columnCount( const QModelIndex &parent ) const
{
	return parent.isValid() ? 0 : ColumnCount;
}

QVariant CConsoleModel::data( const QModelIndex &index, int nRole ) const
{
	const ConsoleLine &line = Line( index.row() );
	if ( nRole == SeverityRole )
		return static_cast<int>( line.m_Severity );
	if ( nRole == LineRole )
		return FormatConsoleLine( line );
	if ( nRole == Qt::ForegroundRole )
		return index.column() == TextColumn ? SeverityColour( line.m_Severity, m_bDark ) : FaintTextColour( m_bDark );
	if ( nRole != Qt::DisplayRole )
		return {};
	switch ( index.column() )
	{
		case TimeColumn:
			return line.m_Time.toString( QStringLiteral( "HH:mm:ss.zzz" ) );
		case SourceColumn:
			return line.m_Source.isEmpty() ? QStringLiteral( "tessel" ) : line.m_Source;
		default:
			return ToDisplayLine( line.m_Text, SHOWN_LENGTH );
	}
}

QVariant CConsoleModel::headerData( int nSection, Qt::Orientation orientation, int nRole ) const
{
	if ( orientation != Qt::Horizontal || nRole != Qt::DisplayRole )
		return {};
	switch ( nSection )
	{
		case TimeColumn:
			return tr( "Time" );
		case SourceColumn:
			return tr( "Source" );
		default:
			return tr( "Text" );
	}
}

QString FormatConsoleLine( const ConsoleLine &line )
{
	return QStringLiteral( "%1 [%2] %3" )
		.arg( line.m_Time.toString( QStringLiteral( "HH:mm:ss.zzz" ) ),
			line.m_Source.isEmpty() ? QStringLiteral( "tessel" ) : line.m_Source, line.m_Text );
}

CConsoleFilter::CConsoleFilter( QObject *pParent )
	: QSortFilterProxyModel( pParent )
{
}

void CConsoleFilter::SetText( const QString &text )
{
	m_Text = text;
	invalidateFilter();
}

void CConsoleFilter::SetLeastSeverity( LoggingSeverity severity )
{
	m_LeastSeverity = severity;
	invalidateFilter();
}

bool CConsoleFilter::filterAcceptsRow( int nRow, const QModelIndex & ) const
{
	const auto *pModel = qobject_cast<const CConsoleModel *>( sourceModel() );
	const ConsoleLine &line = pModel->Line( nRow );
	return line.m_Severity >= m_LeastSeverity &&
		   ( m_Text.isEmpty() || line.m_Text.contains( m_Text, Qt::CaseInsensitive ) ||
			   line.m_Source.contains( m_Text, Qt::CaseInsensitive ) );
}
