#include "recordings/flamescalelayout.h"

#include <algorithm>
#include <cmath>

// Heights are in rows, from the root's row down.
static constexpr float BAND_HEIGHT = 0.75f;
static constexpr float MILLISECOND_BAND = 1.25f;
static constexpr float FRAME_RATE_BAND = 2.0f;
static constexpr float MARKER_BAND = 2.75f;
static constexpr float MARKER_TOP = 2.825f;
static constexpr float MARKER_BOTTOM = 3.425f;
static constexpr float MICROSECONDS = 1000.0f; // per millisecond
static constexpr int MAX_BLOCKS = 4096;        // milliseconds that are drawn one by one

static constexpr Qt::Alignment AT_RIGHT = Qt::AlignRight | Qt::AlignVCenter;
static constexpr Qt::Alignment AT_LEFT = Qt::AlignLeft | Qt::AlignVCenter;

// From one time to another in one of the bands.
static QRectF BandRect( const FlameMap &map, float flBand, float flFrom, float flTo )
{
	const float x = map.X( flFrom );
	return QRectF( x, map.Y( flBand ), map.X( flTo ) - x, BAND_HEIGHT * map.m_flRowHeight );
}

static float WidthOf( const FlameScale &scale )
{
	const float flMilliseconds = static_cast<float>( scale.GetMilliseconds() ) * MICROSECONDS;
	return std::floor( std::max( FlameScale::BudgetOf( scale.GetExponent() ), flMilliseconds ) );
}

QRectF FlameScaleRect( const FlameScale &scale, const FlameMap &map )
{
	return QRectF( map.m_flXOrigin, map.Y( MILLISECOND_BAND ), WidthOf( scale ) * map.m_flXScale,
		3 * BAND_HEIGHT * map.m_flRowHeight );
}

// The size at which the text is as wide as the box, where it is wider. A text that is too small to be read says nothing
// wrong when it is cut off.
static double FittingFontSize( const QFontMetricsF &metrics, const QString &text, const QRectF &box )
{
	constexpr double SMALLEST = 0.25;
	const double flWidth = metrics.horizontalAdvance( text );
	return box.width() > 0.0 && flWidth > box.width() ? std::max( box.width() / flWidth, SMALLEST ) : 1.0;
}

static FlameScaleLabel MakeLabel(
	const QFontMetricsF &metrics, const QRectF &box, const QString &text, Qt::Alignment alignment )
{
	return { box, text, alignment, FittingFontSize( metrics, text, box ) };
}

static QString MillisecondText( int nMillisecond )
{
	return QString::asprintf( "%d ms", nMillisecond );
}

// All of them in one size, that of the last.
static void LayoutMilliseconds( FlameScaleLayout &layout, const FlameScale &scale, const FlameMap &map, float flLeft,
	float flRight, const QFontMetricsF &metrics )
{
	const float flLast = static_cast<float>( scale.GetMilliseconds() );
	const auto blockAt = [&]( float x )
	{ return static_cast<int>( std::clamp( std::floor( map.TimeAt( x ) / MICROSECONDS ), 0.0f, flLast ) ); };
	// A block more on each side, for what is rounded.
	const int nFirst = std::max( blockAt( flLeft ) - 1, 0 );
	const int nEnd = std::min( blockAt( flRight ) + 2, scale.GetMilliseconds() );
	const double flFontSize = FittingFontSize(
		metrics, MillisecondText( scale.GetMilliseconds() ), BandRect( map, MILLISECOND_BAND, 0.0f, MICROSECONDS ) );
	// An odd step, so that filled and open blocks still alternate.
	const int nStep = ( nEnd - nFirst ) / MAX_BLOCKS * 2 + 1;
	for ( int i = nFirst; i < nEnd; i += nStep )
	{
		const float flFrom = static_cast<float>( i ) * MICROSECONDS;
		const QRectF block = BandRect( map, MILLISECOND_BAND, flFrom, flFrom + MICROSECONDS );
		const FlameScaleLabel label = { block, MillisecondText( i + 1 ), AT_RIGHT, flFontSize };
		if ( i % 2 != 0 )
		{
			layout.m_OpenLabels.push_back( label );
			continue;
		}
		layout.m_Fills.push_back( block );
		layout.m_FilledLabels.push_back( label );
	}
}

static void LayoutBudgets(
	FlameScaleLayout &layout, const FlameScale &scale, const FlameMap &map, const QFontMetricsF &metrics )
{
	const int nExponent = scale.GetExponent();
	for ( int j = nExponent; j <= nExponent + 3; j++ )
	{
		const float flBudget = FlameScale::BudgetOf( j );
		const QRectF quarter = BandRect( map, FRAME_RATE_BAND, 0.75f * flBudget, flBudget );
		layout.m_Fills.push_back( quarter );
		if ( j <= nExponent + 1 )
			layout.m_FilledLabels.push_back(
				MakeLabel( metrics, quarter, QString::asprintf( "%d fps", 1 << j ), AT_RIGHT ) );
	}
}

static void LayoutMarker( FlameScaleLayout &layout, const FlameScale &scale, const FlameMap &map, float flMarker,
	const QFontMetricsF &metrics )
{
	if ( !( flMarker > 0.0f ) )
		return;
	const float x = map.X( flMarker );
	layout.m_Marker = QLineF( x, map.Y( MARKER_TOP ), x, map.Y( MARKER_BOTTOM ) );
	const double flFrameRate = 1000000.0f / flMarker;
	const double flMilliseconds = flMarker * 0.001f;
	layout.m_MarkerLabels = {
		MakeLabel( metrics, BandRect( map, MARKER_BAND, 0.0f, flMarker ),
			QString::asprintf( "%.1f fps  ", flFrameRate ), AT_RIGHT ),
		MakeLabel( metrics, BandRect( map, MARKER_BAND, flMarker, WidthOf( scale ) ),
			QString::asprintf( "  %.3f ms", flMilliseconds ), AT_LEFT ),
	};
}

FlameScaleLayout LayoutFlameScale( const FlameScale &scale, float flMarker, const FlameMap &map, float flLeft,
	float flRight, const QFontMetricsF &metrics )
{
	FlameScaleLayout layout;
	const float flMilliseconds = static_cast<float>( scale.GetMilliseconds() ) * MICROSECONDS;
	layout.m_Outlines = {
		BandRect( map, MILLISECOND_BAND, 0.0f, flMilliseconds ),
		BandRect( map, FRAME_RATE_BAND, 0.0f, FlameScale::BudgetOf( scale.GetExponent() ) ),
	};
	LayoutMilliseconds( layout, scale, map, flLeft, flRight, metrics );
	LayoutBudgets( layout, scale, map, metrics );
	LayoutMarker( layout, scale, map, flMarker, metrics );
	return layout;
}
