#include "consolemodel.h"

#include "displaytext.h"
#include "style.h"

CConsoleModel::CConsoleModel( int nLineLimit, QObject *pParent )
	: QAbstractTableModel( pParent )
	, m_nLineLimit( nLineLimit )
{
}

void CConsoleModel::Append( std::vector<ConsoleLine> lines )
{
	if ( lines.empty() )
		return;
	const int nNew = std::min( static_cast<int>( lines.size() ), m_nLineLimit );
	const int nOld = rowCount();
	const int nExcess = std::max( 0, nOld + nNew - m_nLineLimit );
	if ( nExcess > 0 )
	{
		beginRemoveRows( {}, 0, nExcess - 1 );
		m_Lines.erase( m_Lines.begin(), m_Lines.begin() + nExcess );
		endRemoveRows();
	}
	beginInsertRows( {}, nOld - nExcess, nOld - nExcess + nNew - 1 );
	m_Lines.insert(
		m_Lines.end(), std::make_move_iterator( lines.end() - nNew ), std::make_move_iterator( lines.end() ) );
	endInsertRows();
}

void CConsoleModel::Clear()
{
	beginResetModel();
	m_Lines.clear();
	endResetModel();
}

void CConsoleModel::SetDarkStyle( bool bDark )
{
	m_bDark = bDark;
	if ( !m_Lines.empty() )
		emit dataChanged( index( 0, 0 ), index( rowCount() - 1, ColumnCount - 1 ), { Qt::ForegroundRole } );
}

int CConsoleModel::rowCount( const QModelIndex &parent ) const
{
	return parent.isValid() ? 0 : static_cast<int>( m_Lines.size() );
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
