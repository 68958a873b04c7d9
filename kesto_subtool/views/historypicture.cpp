#include "views/historypicture.h"

#include <QPainter>
#include <cmath>

static QPixmap MakePicture( const HistoryPictureKey &key )
{
	QPixmap picture( key.m_Size * key.m_flPixelRatio );
	picture.setDevicePixelRatio( key.m_flPixelRatio );
	picture.fill( Qt::transparent );
	return picture;
}

bool CHistoryBackdrop::Prepare( const HistoryPictureKey &key )
{
	if ( !m_Picture.isNull() && key == m_Key )
		return false;
	m_Key = key;
	m_Picture = MakePicture( key );
	return true;
}

// False when that is no whole number of device pixels.
bool CHistoryStrip::MoveLeft( int nPixels )
{
	const qreal flDevicePixels = nPixels * m_Key.m_flPixelRatio;
	if ( flDevicePixels != std::floor( flDevicePixels ) )
		return false;
	if ( nPixels > 0 )
		m_Picture.scroll( -static_cast<int>( flDevicePixels ), 0, m_Picture.rect() );
	return true;
}

void CHistoryStrip::Clear( int nLeft, int nRight )
{
	QPainter painter( &m_Picture );
	painter.setCompositionMode( QPainter::CompositionMode_Source );
	painter.fillRect( nLeft, 0, nRight - nLeft, m_Key.m_Size.height(), Qt::transparent );
}

std::array<HistoryColumnRange, 2> CHistoryStrip::Prepare(
	const HistoryPictureKey &key, const HistoryColumns &columns, Reach reach )
{
	const int nFilled = columns.Filled();
	const int nWidth = key.m_Size.width();
	const int64_t nAdvanced = columns.NewestShown() - m_nNewest;
	// The newest painted sample may have changed since, and with it the segment to its newer neighbour: two columns
	// more than the new ones are painted again, and the picture is of use only where others remain.
	const int64_t nAgain = nAdvanced + 2;
	const bool bKept = !m_Picture.isNull() && key == m_Key && nAdvanced >= 0 && nAgain < nFilled &&
					   MoveLeft( static_cast<int>( nAdvanced ) * columns.m_Measures.Pitch() );
	m_nNewest = columns.NewestShown();
	if ( !bKept )
	{
		m_Key = key;
		m_Picture = MakePicture( key );
		return { columns.AllFilled(), HistoryColumnRange() };
	}
	const int nEnd = static_cast<int>( nAgain );
	Clear( columns.RightEdge( nWidth, nEnd ) + reach.m_nNewer, nWidth );
	if ( nFilled < columns.m_nVisible )
		return { HistoryColumnRange{ 0, nEnd }, HistoryColumnRange() };
	Clear( 0, columns.RightEdge( nWidth, nFilled - 1 ) + reach.m_nOlder );
	return { HistoryColumnRange{ 0, nEnd }, HistoryColumnRange{ nFilled - 1, nFilled } };
}
