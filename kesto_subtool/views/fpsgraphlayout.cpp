#include "views/fpsgraphlayout.h"

#include <algorithm>

#include "views/framerate.h"
#include "views/historyscale.h"

static constexpr QRgb PLAIN_CURVE = 0xff00ffff; // cyan

int FPSMarkerPaintedY( float flRate, int nHeight, int nZoomStep )
{
	const float flPixelsPerFrame = static_cast<float>( nZoomStep + HISTORY_ZOOM_LIMIT ) * 0.54f + 0.6f;
	return TruncateToPixels( static_cast<float>( nHeight ) - flPixelsPerFrame * flRate );
}

int FPSMarkerGrabY( float flRate, int nHeight, int nZoomStep )
{
	return nHeight - TruncateToPixels( flRate * 2.0f * HistoryZoomFactor( nZoomStep ) );
}

float FPSMarkerRateAt( int y, int nHeight, int nZoomStep )
{
	const float flRate = static_cast<float>( nHeight - y ) * 0.5f / HistoryZoomFactor( nZoomStep );
	return std::clamp( static_cast<float>( TruncateToPixels( flRate ) ), FPS_MARKER_MIN, FPS_MARKER_MAX );
}

static QRect LeftHandle( int y )
{
	return QRect( QPoint( 0, y - 8 ), QPoint( 15, y + 7 ) );
}

static QRect RightHandle( int y, int nWidth )
{
	return QRect( QPoint( nWidth - 16, y - 8 ), QPoint( nWidth - 1, y + 7 ) );
}

FPSMarkerHandle FPSMarkerHandleAt( const FPSMarkers &markers, QPoint ptMouse, QSize size, int nZoomStep )
{
	const auto IsOn = [&]( float flRate )
	{
		const int y = FPSMarkerGrabY( flRate, size.height(), nZoomStep );
		return LeftHandle( y ).contains( ptMouse ) || RightHandle( y, size.width() ).contains( ptMouse );
	};
	if ( IsOn( markers.m_flUpper ) )
		return FPSMarkerHandle::Upper;
	return IsOn( markers.m_flLower ) ? FPSMarkerHandle::Lower : FPSMarkerHandle::None;
}

static FPSMarkerLayout MakeMarker( float flRate, QRgb colour, QSize size, int nZoomStep )
{
	const int y = FPSMarkerPaintedY( flRate, size.height(), nZoomStep );
	FPSMarkerLayout marker;
	marker.m_Line = QLine( 0, y, size.width() - 1, y );
	marker.m_LeftHandle = LeftHandle( y );
	marker.m_RightHandle = RightHandle( y, size.width() );
	marker.m_TextBaseline = QPoint( 16, y - 8 );
	marker.m_Text = QString::asprintf( "%d fps", static_cast<int>( flRate ) );
	marker.m_Colour = colour;
	return marker;
}

std::array<FPSMarkerLayout, 2> LayoutFPSMarkers( const FPSMarkers &markers, QSize size, int nZoomStep )
{
	const float flLower = markers.m_flLower;
	const float flUpper = markers.m_flUpper;
	return { MakeMarker( flLower, FrameRateColour( 0.0f, flLower, flUpper ), size, nZoomStep ),
		MakeMarker( flUpper, FrameRateColour( FPS_MARKER_MAX, flLower, flUpper ), size, nZoomStep ) };
}

namespace
{
// One sample's frame rate on the curve.
struct CurveSample
{
	float m_flRate;
	int m_nY;
	QRgb m_Colour;
};

class CCurveScale
{
public:
	CCurveScale( const BudgetViewData &data, const HistoryView &view, const FPSMarkers &markers )
		: m_Data( data )
		, m_Markers( markers )
		, m_nHeight( view.m_Size.height() )
		, m_flPixelsPerStep( static_cast<float>( HistoryPixelsPerStep( view.m_nZoomStep ) ) )
	{
	}

	QRgb ColourOf( float flRate ) const
	{
		return m_Data.m_bShowThresholds ? FrameRateColour( flRate, m_Markers.m_flLower, m_Markers.m_flUpper )
										: PLAIN_CURVE;
	}

	CurveSample At( int64_t nSample ) const
	{
		const float flRate = SampleFrameRate( m_Data, nSample );
		const int y = m_nHeight - TruncateToPixels( flRate * 0.02f * m_flPixelsPerStep );
		return { flRate, std::min( y, m_nHeight ), ColourOf( flRate ) };
	}

private:
	const BudgetViewData &m_Data;
	const FPSMarkers &m_Markers;
	int m_nHeight;
	float m_flPixelsPerStep;
};
} // namespace

void LayoutFPSCurve( FPSCurveLayout &layout, const BudgetViewData &data, const HistoryView &view,
	const FPSMarkers &markers, const HistoryColumnRange &range )
{
	layout.m_Segments.clear();
	layout.m_Points.clear();
	if ( range.m_nFirst >= range.m_nEnd )
		return;
	const HistoryColumns &columns = view.m_Columns;
	const int nSide = columns.m_Measures.m_nBarWidth;
	const auto AddPoint = [&]( const CurveSample &sample, int x ) {
		layout.m_Points.push_back( { QRect( x - nSide / 2, sample.m_nY - nSide / 2, nSide, nSide ), sample.m_Colour } );
	};
	const CCurveScale scale( data, view, markers );
	CurveSample newer = scale.At( columns.NewestShown() - range.m_nFirst );
	for ( int i = range.m_nFirst; i < range.m_nEnd; i++ )
	{
		// Sample 0 has no older neighbour and stands in for it.
		const CurveSample older = scale.At( std::max<int64_t>( 0, columns.NewestShown() - i - 1 ) );
		const int x = columns.Centre( view.m_Size.width(), i );
		const int xOlder = columns.Centre( view.m_Size.width(), i + 1 );
		const QRgb middle = scale.ColourOf( ( newer.m_flRate + older.m_flRate ) * 0.5f );
		layout.m_Segments.push_back(
			{ QLine( xOlder, older.m_nY, x, newer.m_nY ), older.m_Colour, middle, newer.m_Colour } );
		AddPoint( newer, x );
		newer = older;
	}
	if ( range.m_nEnd < columns.Filled() )
		AddPoint( newer, columns.Centre( view.m_Size.width(), range.m_nEnd ) );
}

std::optional<QRect> FPSGraphCursor( const HistoryView &view )
{
	const std::optional<int> column = view.m_Cursor ? view.m_Columns.ColumnOf( *view.m_Cursor ) : std::nullopt;
	if ( !column )
		return std::nullopt;
	const int nPitch = view.m_Columns.m_Measures.Pitch();
	const int x = view.m_Columns.Centre( view.m_Size.width(), *column ) - nPitch / 2;
	return QRect( QPoint( x, 0 ), QPoint( x + nPitch - 1, view.m_Size.height() - 2 ) );
}
