// The formats of Qt 5.
#include "views/layoutformats.h"

#include <QDataStream>
#include <QString>
#include <limits>

namespace
{
constexpr int MAX_PIXELS = ( 1 << 24 ) - 1; // QWIDGETSIZE_MAX
constexpr int MAX_ITEMS = 1000;             // of one kind, in one place
constexpr int MAX_NAME = 1000;              // characters
constexpr int MAX_LEVELS = 16;              // of docks inside one another
constexpr int AREAS = 4;                    // left, right, top, bottom

// Reads numbers and notes the first one that is missing or out of its range; from then on it reads zeros.
class CLayoutReader
{
public:
	explicit CLayoutReader( const QByteArray &bytes )
		: m_Stream( bytes )
	{
		m_Stream.setVersion( QDataStream::Qt_5_0 );
	}

	template <typename T>
	T Number( T nLowest, T nHighest )
	{
		T nValue = 0;
		m_Stream >> nValue;
		Require( m_Stream.status() == QDataStream::Ok && nValue >= nLowest && nValue <= nHighest );
		return m_bGood ? nValue : 0;
	}

	void Require( bool bCondition ) { m_bGood = m_bGood && bCondition; }

	template <typename T>
	void Expect( T nValue )
	{
		Number<T>( nValue, nValue );
	}

	bool Flag() { return Number<quint8>( 0, 1 ) != 0; }
	int Count( int nLowest = 0 ) { return Number<qint32>( nLowest, MAX_ITEMS ); }

	void Pixels( int nNumbers )
	{
		for ( int i = 0; i < nNumbers; i++ )
			Number<qint32>( -MAX_PIXELS, MAX_PIXELS );
	}

	void Name()
	{
		QString name;
		m_Stream >> name;
		Require( m_Stream.status() == QDataStream::Ok && name.size() <= MAX_NAME );
	}

	bool IsGood() const { return m_bGood; }
	bool AtEnd() const { return m_Stream.atEnd(); }

private:
	QDataStream m_Stream;
	bool m_bGood = true;
};

constexpr int RECT = 4; // numbers
constexpr int SIZE = 2;

// One bit for being visible, one for floating.
constexpr quint8 ALL_ITEM_FLAGS = 3;

enum class Marker : quint8
{
	TabbedDocks = 0xFA,
	Dock = 0xFB,
	RowOfDocks = 0xFC, // also in front of a row or tabs inside one
	ToolBars = 0xFC,
	Docks = 0xFD
};

Marker ReadMarker( CLayoutReader &reader )
{
	return static_cast<Marker>( reader.Number<quint8>( 0, 0xFF ) );
}

void ReadDocks( CLayoutReader &reader, int nLevel );

void ReadDock( CLayoutReader &reader, int nLevel )
{
	const Marker marker = ReadMarker( reader );
	reader.Require( marker == Marker::Dock || marker == Marker::RowOfDocks );
	if ( marker == Marker::Dock )
	{
		reader.Name();
		reader.Number<quint8>( 0, ALL_ITEM_FLAGS );
	}
	reader.Pixels( 4 ); // place, size and bounds along the row, or a floating dock's rectangle
	if ( marker == Marker::RowOfDocks )
		ReadDocks( reader, nLevel + 1 );
}

void ReadDocks( CLayoutReader &reader, int nLevel )
{
	const Marker marker = ReadMarker( reader );
	reader.Require( marker == Marker::TabbedDocks || marker == Marker::RowOfDocks );
	reader.Require( nLevel <= MAX_LEVELS );
	if ( marker == Marker::TabbedDocks )
		reader.Number<qint32>( -1, MAX_ITEMS ); // the tab in front
	reader.Number<quint8>( Qt::Horizontal, Qt::Vertical );
	const int nCount = reader.Count( 1 ); // Qt writes no empty rows
	for ( int i = 0; i < nCount && reader.IsGood(); i++ )
		ReadDock( reader, nLevel );
}

void ReadDockAreas( CLayoutReader &reader )
{
	const int nAreas = reader.Number<qint32>( 0, AREAS );
	int nLowest = 0; // areas come in order, none twice
	for ( int i = 0; i < nAreas && reader.IsGood(); i++ )
	{
		nLowest = reader.Number<qint32>( nLowest, AREAS - 1 ) + 1;
		reader.Pixels( SIZE );
		ReadDocks( reader, 1 );
	}
	reader.Pixels( SIZE ); // of the central widget
	for ( int i = 0; i < 4; i++ )
		reader.Number<qint32>( Qt::LeftDockWidgetArea, Qt::BottomDockWidgetArea ); // that has the corner
}

void ReadToolBars( CLayoutReader &reader )
{
	const int nLines = reader.Count();
	for ( int nLine = 0; nLine < nLines && reader.IsGood(); nLine++ )
	{
		reader.Number<qint32>( 0, AREAS - 1 );
		const int nToolBars = reader.Count();
		for ( int i = 0; i < nToolBars && reader.IsGood(); i++ )
		{
			reader.Name();
			reader.Number<quint8>( 0, ALL_ITEM_FLAGS );
			reader.Pixels( 2 );           // place and size along the line
			for ( int j = 0; j < 2; j++ ) // a floating tool bar's rectangle in two packed numbers
				reader.Number<quint32>( 0, std::numeric_limits<quint32>::max() );
		}
	}
}
} // namespace

bool IsWindowGeometry( const QByteArray &bytes )
{
	CLayoutReader reader( bytes );
	reader.Expect<quint32>( 0x01D9D0CB );
	const quint16 nMajor = reader.Number<quint16>( 1, 3 );
	reader.Expect<quint16>( 0 );
	reader.Pixels( 2 * RECT );              // with and without frame
	reader.Number<qint32>( -1, MAX_ITEMS ); // screen
	reader.Number<quint8>( 0, Qt::WindowMaximized );
	reader.Number<quint8>( 0, Qt::WindowFullScreen );
	if ( nMajor >= 2 )
		reader.Number<qint32>( 0, MAX_PIXELS ); // width of the screen
	if ( nMajor >= 3 )
		reader.Pixels( RECT );
	return reader.IsGood() && reader.AtEnd();
}

bool IsMainWindowState( const QByteArray &bytes )
{
	CLayoutReader reader( bytes );
	reader.Expect<qint32>( 0xFF );
	reader.Expect<qint32>( 0 ); // the version that saveState was given
	reader.Require( ReadMarker( reader ) == Marker::Docks );
	ReadDockAreas( reader );
	reader.Require( ReadMarker( reader ) == Marker::ToolBars );
	ReadToolBars( reader );
	return reader.IsGood() && reader.AtEnd();
}

bool IsSplitterState( const QByteArray &bytes )
{
	CLayoutReader reader( bytes );
	reader.Expect<qint32>( 0xFF );
	const qint32 nVersion = reader.Number<qint32>( 0, 1 );
	const int nSizes = reader.Count();
	for ( int i = 0; i < nSizes && reader.IsGood(); i++ )
		reader.Number<qint32>( 0, MAX_PIXELS );
	reader.Flag();                                         // whether children collapse
	reader.Number<qint32>( -1, MAX_ITEMS );                // width of a handle
	reader.Flag();                                         // whether children follow a handle at once
	reader.Number<qint32>( Qt::Horizontal, Qt::Vertical ); // orientation
	if ( nVersion >= 1 )
		reader.Flag();
	return reader.IsGood() && reader.AtEnd();
}
