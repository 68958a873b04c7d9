// The lines of the console.
#pragma once

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>

#include "consolelines.h"

// Keeps the newest lines up to the limits of CNewestLines.
class CConsoleModel final : public QAbstractTableModel
{
	Q_OBJECT

public:
	enum Column
	{
		TimeColumn,
		SourceColumn,
		TextColumn,
		ColumnCount
	};
	enum Role
	{
		SeverityRole = Qt::UserRole, // int
		LineRole                     // QString: the whole line as it is copied, nothing cut
	};
	static constexpr int LINE_LIMIT = 10000;
	static constexpr int SHOWN_LENGTH = 2000; // characters of a line that are laid out; copying takes them all

	explicit CConsoleModel( int nLineLimit = LINE_LIMIT, QObject *pParent = nullptr );

	// Adds the lines at the end in one step; the oldest ones for which there is no room go.
	void Append( CNewestLines lines );
	void Clear();

	const ConsoleLine &Line( int nRow ) const { return m_Lines.At( nRow ); }
	int LineLimit() const { return m_Lines.LineLimit(); }

	// The colours of severities follow the style.
	void SetDarkStyle( bool bDark );

	int rowCount( const QModelIndex &parent = {} ) const override;
	int columnCount( const QModelIndex &parent = {} ) const override;
	QVariant data( const QModelIndex &index, int nRole ) const override;
	QVariant headerData( int nSection, Qt::Orientation orientation, int nRole ) const override;

private:
	CNewestLines m_Lines;
	bool m_bDark = false;
};

// "12:34:56.789 [source] text"
QString FormatConsoleLine( const ConsoleLine &line );

// Shows the lines that hold a text (anywhere, without regard to case) and are at least that severe.
class CConsoleFilter final : public QSortFilterProxyModel
{
	Q_OBJECT

public:
	explicit CConsoleFilter( QObject *pParent = nullptr );

	void SetText( const QString &text );
	void SetLeastSeverity( LoggingSeverity severity );

protected:
	bool filterAcceptsRow( int nRow, const QModelIndex &parent ) const override;

private:
	QString m_Text;
	LoggingSeverity m_LeastSeverity = LoggingSeverity::Message;
};
