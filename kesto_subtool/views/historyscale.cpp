#include "views/historyscale.h"

#include <algorithm>
#include <cmath>

#include "keel0/keyvalues.h"

static int ClampHistoryZoom( int nZoomStep )
{
	return std::clamp( nZoomStep, -HISTORY_ZOOM_LIMIT, HISTORY_ZOOM_LIMIT );
}

int LoadHistoryZoom( const KeyValues *pSettings, const char *pKey )
{
	return ClampHistoryZoom( pSettings ? pSettings->GetInt( pKey, 0 ) : 0 );
}

int HistoryZoomAfterWheel( int nZoomStep, int nAngleDelta )
{
	return ClampHistoryZoom( nAngleDelta >= 1 ? nZoomStep + 1 : nZoomStep - 1 );
}

float HistoryZoomFactor( int nZoomStep )
{
	return static_cast<float>( nZoomStep + HISTORY_ZOOM_LIMIT ) * 0.27f + 0.3f;
}

int HistoryPixelsPerStep( int nZoomStep )
{
	return static_cast<int>( HistoryZoomFactor( nZoomStep ) * 100.0f );
}

int TruncateToPixels( float flPixels )
{
	// Far outside of any screen, and small enough for sums and for the paint engine's fixed-point numbers.
	constexpr float LIMIT = 16777216.0f;
	if ( std::isnan( flPixels ) )
		return 0;
	return static_cast<int>( std::clamp( flPixels, -LIMIT, LIMIT ) );
}

static QString AxisText( int nStep, HistoryAxisUnit unit )
{
	switch ( unit )
	{
		case HistoryAxisUnit::Milliseconds:
			return QString::asprintf( "%d ms", 5 * nStep );
		case HistoryAxisUnit::FramesPerSecondOfTime:
			return QString::asprintf( "%.2f fps", 60.0 / nStep );
		case HistoryAxisUnit::FramesPerSecond:
			break;
	}
	return QString::asprintf( "%d fps", 50 * nStep );
}

void LayoutHistoryAxis( HistoryAxisLayout &layout, QSize size, int nZoomStep, HistoryAxisUnit unit, int nRowHeight )
{
	layout.m_Grid.clear();
	layout.m_SubGrid.clear();
	layout.m_Labels.clear();
	const int nPixelsPerStep = HistoryPixelsPerStep( nZoomStep );
	int nSteps = size.height() / nPixelsPerStep + 2;
	if ( nSteps < 0 )
		nSteps = 1;
	for ( int i = 0; i < nSteps; i++ )
	{
		const int y = size.height() - i * nPixelsPerStep;
		layout.m_Grid.emplace_back( 0, y, size.width(), y );
		for ( int j = 1; nZoomStep > -HISTORY_ZOOM_LIMIT && j <= 4; j++ )
		{
			const int yMinor = y + j * ( nPixelsPerStep / 5 );
			layout.m_SubGrid.emplace_back( 0, yMinor, size.width(), yMinor );
		}
		if ( i > 0 )
			layout.m_Labels.push_back(
				{ QRect( QPoint( 0, y - nRowHeight ), QPoint( size.width() - 1, y - 1 ) ), AxisText( i, unit ) } );
	}
}
