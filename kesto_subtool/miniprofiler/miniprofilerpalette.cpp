#include "miniprofiler/miniprofilerpalette.h"

namespace
{
QLinearGradient Vertical( const QColor &top, const QColor &bottom )
{
	QLinearGradient gradient( 0, 0, 0, 1 );
	gradient.setStops( { { 0.0, top }, { 1.0, bottom } } );
	return gradient;
}

void SetFills( MiniProfilerPalette &palette, const QLinearGradient &selected, const QLinearGradient &hover )
{
	palette.m_SelectedGradient = selected;
	palette.m_HoverGradient = hover;
	palette.m_SelectedFill = selected.stops().last().second;
	palette.m_HoverFill = hover.stops().first().second;
}

MiniProfilerPalette MakeLight()
{
	MiniProfilerPalette palette;
	SetFills( palette, Vertical( QColor( 242, 241, 255 ), QColor( 224, 222, 255 ) ),
		Vertical( QColor( 238, 237, 255 ), QColor( 248, 248, 255 ) ) );
	palette.m_HoverOutline = QColor( 194, 191, 230 );
	palette.m_BarOutline = QColor( 207, 182, 86 );
	palette.m_BarFill = QColor( 255, 237, 168 );
	palette.m_Band = QColor( 255, 243, 196 );
	palette.m_PaleBar = QColor( 255, 248, 221 );
	palette.m_Sigma = QColor( 171, 165, 207 );
	palette.m_StrongSigma = QColor( 107, 98, 164 );
	palette.m_PeakOutline = QColor( 234, 127, 129 );
	palette.m_PeakFill = QColor( 253, 167, 169 );
	palette.m_Faint = QColor( 222, 222, 222 );
	return palette;
}

MiniProfilerPalette MakeDark()
{
	const auto Dark = []( int nRed, int nGreen, int nBlue ) { return QColor( nRed, nGreen, nBlue ).darker( 150 ); };
	MiniProfilerPalette palette;
	SetFills( palette, Vertical( Dark( 160, 190, 207 ), Dark( 109, 126, 137 ) ),
		Vertical( Dark( 132, 152, 164 ), Dark( 151, 195, 221 ) ) );
	palette.m_HoverOutline = Dark( 95, 108, 115 );
	palette.m_BarOutline = Dark( 119, 95, 29 );
	palette.m_BarFill = Dark( 184, 160, 94 );
	palette.m_Band = Dark( 222, 201, 145 );
	palette.m_PaleBar = Dark( 255, 241, 203 );
	palette.m_Sigma = Dark( 108, 111, 153 );
	palette.m_StrongSigma = Dark( 50, 54, 103 );
	palette.m_PeakOutline = Dark( 149, 109, 60 );
	palette.m_PeakFill = Dark( 184, 144, 94 );
	palette.m_Faint = Dark( 222, 222, 222 );
	palette.m_bDark = true;
	return palette;
}
} // namespace

const MiniProfilerPalette &MiniProfilerPalette::For( bool bDark )
{
	static const MiniProfilerPalette s_Light = MakeLight();
	static const MiniProfilerPalette s_Dark = MakeDark();
	return bDark ? s_Dark : s_Light;
}
