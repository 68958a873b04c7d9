#include "views/fixedpitchtext.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace
{
bool HasInk( const QImage &image, int nRow )
{
	const auto *pRow = reinterpret_cast<const QRgb *>( image.constScanLine( nRow ) );
	return std::any_of( pRow, pRow + image.width(), []( QRgb pixel ) { return pixel != 0; } );
}
} // namespace

CFixedPitchText::CFixedPitchText( const QFont &font )
	: m_Font( font )
{
	const QFontMetricsF metrics( font );
	m_nAdvance = static_cast<int>( std::lround( metrics.horizontalAdvance( QLatin1Char( '0' ) ) * PHASES ) );
	const int nReach = m_nAdvance / PHASES + 1 + 2 * MARGIN;
	m_nCellWidth = ( nReach + CHUNK - 1 ) / CHUNK * CHUNK;
	m_flAscent = metrics.ascent();
	m_flLineHeight = metrics.ascent() + metrics.descent();
}

bool CFixedPitchText::Fits( const QString &text, int nWidth ) const
{
	return text.size() * m_nAdvance <= nWidth * PHASES &&
		   std::ranges::all_of( text, []( QChar c ) { return c >= QLatin1Char( FIRST ) && c <= QLatin1Char( LAST ); } );
}

CFixedPitchText::Line CFixedPitchText::Compose( const QString &text, int nWidth, int nHeight, QRgb colour )
{
	Prepare( nWidth, nHeight, colour );
	int nTop = nHeight;
	int nBottom = 0;
	int nX = nWidth * PHASES - text.size() * m_nAdvance;
	for ( const QChar c : text )
	{
		const Cell &cell = CellOf( c.toLatin1(), nX % PHASES );
		Put( cell, nX / PHASES );
		nTop = std::min( nTop, cell.m_nTop );
		nBottom = std::max( nBottom, cell.m_nBottom );
		nX += m_nAdvance;
	}
	nTop = std::min( nTop, nBottom );
	const QRgb *pCorner = m_Pixels.data() + nTop * m_nStride + MARGIN;
	const int nBytesPerLine = m_nStride * static_cast<int>( sizeof( QRgb ) );
	return { QImage( reinterpret_cast<const uchar *>( pCorner ), nWidth, nBottom - nTop, nBytesPerLine,
				 QImage::Format_ARGB32_Premultiplied ),
		nTop };
}

void CFixedPitchText::Prepare( int nWidth, int nHeight, QRgb colour )
{
	if ( nHeight != m_nHeight || colour != m_Colour )
	{
		m_nHeight = nHeight;
		m_Colour = colour;
		m_Cells = {};
	}
	m_nStride = MARGIN + nWidth + m_nCellWidth;
	m_Pixels.assign( static_cast<size_t>( m_nStride ) * static_cast<size_t>( nHeight ), 0 );
}

// Where two characters share a pixel, the stronger one counts. In chunks of a fixed size this needs no loop over single
// pixels.
void CFixedPitchText::Put( const Cell &cell, int nColumn )
{
	const auto *pInk = reinterpret_cast<const uint8_t *>( cell.m_Pixels.data() );
	for ( int y = cell.m_nTop; y < cell.m_nBottom; y++ )
	{
		auto *pLine = reinterpret_cast<uint8_t *>( m_Pixels.data() + y * m_nStride + nColumn );
		for ( int nChunk = 0; nChunk < m_nCellWidth; nChunk += CHUNK )
		{
			constexpr int CHUNK_BYTES = CHUNK * static_cast<int>( sizeof( QRgb ) );
			for ( int i = 0; i < CHUNK_BYTES; i++ )
				pLine[i] = std::max( pLine[i], pInk[i] );
			pLine += CHUNK_BYTES;
			pInk += CHUNK_BYTES;
		}
	}
}

const CFixedPitchText::Cell &CFixedPitchText::CellOf( char c, int nPhase )
{
	std::unique_ptr<Cells> &pCells = m_Cells[static_cast<size_t>( nPhase )];
	if ( !pCells )
		pCells = std::make_unique<Cells>();
	Cell &cell = ( *pCells )[static_cast<size_t>( c - FIRST )];
	if ( !cell.m_bMade )
		cell = Render( c, nPhase );
	return cell;
}

CFixedPitchText::Cell CFixedPitchText::Render( char c, int nPhase ) const
{
	QImage image( m_nCellWidth, m_nHeight, QImage::Format_ARGB32_Premultiplied );
	image.fill( 0 );
	QPainter painter( &image );
	painter.setFont( m_Font );
	painter.setPen( QColor::fromRgba( m_Colour ) );
	const qreal flBaseline = ( m_nHeight - m_flLineHeight ) / 2 + m_flAscent;
	painter.drawText( QPointF( MARGIN + qreal( nPhase ) / PHASES, flBaseline ), QString( QLatin1Char( c ) ) );
	painter.end();

	Cell cell{ true, 0, m_nHeight, {} };
	while ( cell.m_nTop < cell.m_nBottom && !HasInk( image, cell.m_nTop ) )
		cell.m_nTop++;
	while ( cell.m_nBottom > 0 && !HasInk( image, cell.m_nBottom - 1 ) )
		cell.m_nBottom--;
	for ( int y = cell.m_nTop; y < cell.m_nBottom; y++ )
	{
		const auto *pRow = reinterpret_cast<const QRgb *>( image.constScanLine( y ) );
		cell.m_Pixels.insert( cell.m_Pixels.end(), pRow, pRow + m_nCellWidth );
	}
	return cell;
}
