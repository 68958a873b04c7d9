#include "miniprofiler/miniprofilercelllayout.h"

#include <QPolygon>
#include <algorithm>

#include "text/showntext.h"

namespace
{
// Numbers, counts and annotations are set apart from a cell's edge by these many pixels.
constexpr int SMALL_TEXT_MARGIN = 12;
constexpr int COUNT_WIDTH = 16;
constexpr int LEFT_COUNT_WIDTH = 20;
constexpr int ANNOTATION_CHARACTER_WIDTH = 5;
constexpr int MAX_DRAWN_ANNOTATION = 64; // characters, wider than there is room beside a name
constexpr int PEAK_MARGIN = 8;
constexpr int PEAK_WIDTH = 5;

class CCellLayouter
{
public:
	CCellLayouter( const CMiniProfilerRow &row, const MiniProfilerCellPlace &place, const MiniProfilerDisplay &display )
		: m_Row( row )
		, m_Place( place )
		, m_Display( display )
		, m_Palette( MiniProfilerPalette::For( display.m_bDark ) )
	{
	}

	MiniProfilerCellLayout Run()
	{
		LayOutBackground();
		LayOutHighlight();
		if ( m_Place.m_nColumn == MINIPROFILER_NAME )
		{
			LayOutBars();
			LayOutName();
		}
		else
			LayOutNumber();
		return m_Layout;
	}

private:
	void LayOutBackground()
	{
		if ( !m_Display.m_bGroupColours )
			return;
		const CQMiniProfilerRecord *pRecord = AsRecord( &m_Row );
		const CMiniProfilerRow *pGroup = pRecord ? pRecord->m_pGroup : &m_Row;
		if ( m_Row.HasFlag( MINIPROFILER_ROW_COLOURED ) )
			m_Layout.m_Background = m_Row.m_Colour;
		else if ( pGroup && pGroup->HasFlag( MINIPROFILER_ROW_COLOURED ) )
			m_Layout.m_Background = pGroup->m_Colour;
	}

	void LayOutHighlight()
	{
		if ( !m_Place.m_bHovered && !m_Place.m_bSelected )
			return;
		MiniProfilerHighlight highlight;
		highlight.m_Rect = m_Place.m_Rect.adjusted( 0, 1, 0, -1 );
		highlight.m_Fill = m_Place.m_bSelected ? m_Palette.m_SelectedFill : m_Palette.m_HoverFill;
		highlight.m_Style = m_Layout.m_Background ? Qt::Dense4Pattern : Qt::SolidPattern;
		if ( m_Place.m_bHovered )
			highlight.m_Outline = m_Palette.m_HoverOutline;
		m_Layout.m_Highlight = highlight;
	}

	QColor TextColour() const
	{
		const bool bIdle = m_Row.HasFlag( MINIPROFILER_ROW_IDLE );
		QColor colour = bIdle ? Qt::darkGray : Qt::black;
		if ( m_Display.m_bDark && !m_Layout.m_Background )
			colour = bIdle ? Qt::lightGray : Qt::white;
		if ( m_Display.m_bNameTransparent )
			colour.setAlpha( 128 );
		return colour;
	}

	void LayOutNumber()
	{
		if ( !m_Display.m_bTextVisible )
			return;
		const MiniProfilerCellText text = MiniProfilerNumberText( m_Row, m_Place.m_nColumn, m_Display.m_Numbers );
		QColor colour = TextColour();
		if ( text.m_Emphasis == MiniProfilerEmphasis::Faint )
			colour = m_Palette.m_Faint;
		else if ( text.m_Emphasis == MiniProfilerEmphasis::Approximate )
			colour = Qt::lightGray;
		m_Layout.m_Number = MiniProfilerTextBox{ m_Place.m_Rect, m_Display.m_Alignment, colour, text.m_Text };
	}

	void LayOutBars();
	int BarX( float flValue ) const;
	void LayOutBar();
	void LayOutSigma();
	void LayOutPeak();

	void LayOutName();
	void LayOutCount( QRect &rect );
	void LayOutAnnotation( QRect &rect );
	bool IsLeftAligned() const { return m_Display.m_Alignment == Qt::AlignLeft; }

	const CMiniProfilerRow &m_Row;
	const MiniProfilerCellPlace &m_Place;
	const MiniProfilerDisplay &m_Display;
	const MiniProfilerPalette &m_Palette;
	MiniProfilerCellLayout m_Layout;

	// Of the bar.
	size_t m_nStatistic = 0;
	QRect m_BarArea;
	int m_nMidY = 0;
};

void CCellLayouter::LayOutBars()
{
	m_nStatistic = static_cast<size_t>( m_Display.m_nBarMode );
	if ( m_nStatistic == MINIPROFILER_NAME || !( m_Display.m_BarMaxima[m_nStatistic] > 0.0f ) )
		return;
	const int nRightMargin = m_Display.m_bDrawPeaks ? PEAK_MARGIN : 1;
	m_BarArea = m_Place.m_Rect.adjusted( 1, 1, -nRightMargin, -1 );
	m_nMidY = ( m_BarArea.top() + m_BarArea.bottom() ) / 2;
	if ( m_Display.m_bDrawBars )
		LayOutBar();
	if ( m_Display.m_bDrawSigmas )
		LayOutSigma();
	if ( m_Display.m_bDrawPeaks )
		LayOutPeak();
}

// A row outside the scale's rows may be far beyond its end; the painter clips.
int CCellLayouter::BarX( float flValue ) const
{
	constexpr float FAR_AWAY = 100000.0f;
	const float flOffset = static_cast<float>( m_BarArea.width() ) * flValue / m_Display.m_BarMaxima[m_nStatistic];
	return static_cast<int>( std::clamp( flOffset, -FAR_AWAY, FAR_AWAY ) ) + m_BarArea.left();
}

void CCellLayouter::LayOutBar()
{
	const int nCurrent = BarX( m_Row.m_Cur[m_nStatistic] );
	const int nAverage = BarX( m_Row.m_Ave[m_nStatistic] );
	const auto Rect = []( int nLeft, int nTop, int nRight, int nBottom )
	{ return QRect( QPoint( nLeft, nTop ), QPoint( nRight, nBottom ) ); };

	MiniProfilerBar bar;
	bar.m_Rect = Rect( m_BarArea.left(), m_BarArea.top() + 1, nCurrent, m_BarArea.bottom() - 1 );
	bar.m_Fill = m_Palette.m_PaleBar;
	if ( m_Display.m_nNormalised == 0 || m_Place.m_bHovered || m_Place.m_bSelected )
	{
		bar.m_Fill = m_Palette.m_BarFill;
		bar.m_Outline = m_Palette.m_BarOutline;
		bar.m_Band =
			Rect( std::min( nCurrent, nAverage ), m_BarArea.top() + 4, std::max( nCurrent, nAverage ), m_nMidY );
	}
	m_Layout.m_Bar = bar;
}

void CCellLayouter::LayOutSigma()
{
	const float flAverage = m_Row.m_Ave[m_nStatistic];
	const float flDeviation = m_Row.m_StDev[m_nStatistic];
	const int nAverage = BarX( flAverage );
	const int nLow = BarX( flAverage - flDeviation );
	const int nHigh = BarX( flAverage + flDeviation );
	const int nTop = m_BarArea.top();
	const int nBottom = m_BarArea.bottom();

	MiniProfilerSigma sigma;
	sigma.m_Lines = { QLine( nAverage, nTop, nAverage, nBottom ), QLine( nLow, m_nMidY, nHigh, m_nMidY ),
		QLine( nLow, nTop + 2, nLow, nBottom - 2 ), QLine( nHigh, nTop + 2, nHigh, nBottom - 2 ) };
	const bool bStrong = m_Place.m_bSelected || m_Display.m_Alignment == Qt::AlignRight;
	sigma.m_Colour = bStrong ? m_Palette.m_StrongSigma : m_Palette.m_Sigma;
	sigma.m_bThick = m_Place.m_bHovered;
	m_Layout.m_Sigma = sigma;
}

void CCellLayouter::LayOutPeak()
{
	const int nPeak = BarX( m_Row.m_Peaks[m_nStatistic] );
	m_Layout.m_Peak = { QPoint( nPeak, m_BarArea.top() + 1 ), QPoint( nPeak, m_BarArea.bottom() - 1 ),
		QPoint( nPeak - PEAK_WIDTH, m_nMidY ) };
}

void CCellLayouter::LayOutName()
{
	if ( !m_Display.m_bTextVisible )
		return;
	QRect rect = m_Place.m_Rect;
	LayOutCount( rect );
	LayOutAnnotation( rect );
	m_Layout.m_Name = MiniProfilerTextBox{ rect, m_Display.m_Alignment, TextColour(), QString() };
}

void CCellLayouter::LayOutCount( QRect &rect )
{
	const CMiniProfilerGroup *pGroup = AsGroup( &m_Row );
	if ( !pGroup )
		return;
	MiniProfilerTextBox count{
		rect, Qt::AlignLeft | Qt::AlignVCenter, Qt::lightGray, QString::number( pGroup->m_nMembers ) };
	if ( IsLeftAligned() )
	{
		rect.adjust( 0, 0, -SMALL_TEXT_MARGIN, 0 );
		count.m_Box = rect;
		count.m_Alignment = Qt::AlignRight | Qt::AlignVCenter;
		rect.adjust( 0, 0, -COUNT_WIDTH, 0 );
	}
	else
		rect.adjust( LEFT_COUNT_WIDTH, 0, 0, 0 );
	m_Layout.m_SmallText = count;
}

QString Annotation( const CQMiniProfilerRecord &record )
{
	if ( record.HasFlag( MINIPROFILER_ROW_DISAMBIGUATE ) )
		return record.m_pCaller ? record.m_pCaller->Name() : QString();
	// No more than can be drawn, of characters that have four bytes at most.
	const std::string_view project =
		record.Line( CMiniProfilerDescription::LINE_PROJECT ).substr( 0, 4 * ( MAX_DRAWN_ANNOTATION + 1 ) );
	return QString::fromUtf8( project.data(), static_cast<int>( project.size() ) );
}

void CCellLayouter::LayOutAnnotation( QRect &rect )
{
	const CQMiniProfilerRecord *pRecord = AsRecord( &m_Row );
	if ( !pRecord ||
		 !( pRecord->HasFlag( MINIPROFILER_ROW_DUPLICATE ) || pRecord->HasFlag( MINIPROFILER_ROW_DISAMBIGUATE ) ) )
		return;
	const QString text = ShownText( Annotation( *pRecord ), MAX_DRAWN_ANNOTATION );
	if ( text.isEmpty() )
		return;
	MiniProfilerTextBox annotation{ rect, Qt::AlignLeft | Qt::AlignVCenter, TextColour(), text };
	const int nWidth = ANNOTATION_CHARACTER_WIDTH * text.size();
	if ( IsLeftAligned() )
	{
		rect.adjust( 0, 0, -SMALL_TEXT_MARGIN, 0 );
		annotation.m_Box = rect;
		annotation.m_Alignment = Qt::AlignRight | Qt::AlignVCenter;
		rect.adjust( 0, 0, -nWidth, 0 );
	}
	else
		rect.adjust( nWidth, 0, 0, 0 );
	m_Layout.m_SmallText = annotation;
}
} // namespace

MiniProfilerCellLayout LayoutMiniProfilerCell(
	const CMiniProfilerRow &row, const MiniProfilerCellPlace &place, const MiniProfilerDisplay &display )
{
	return CCellLayouter( row, place, display ).Run();
}

QRect MiniProfilerCellLayout::GraphExtent() const
{
	QRect extent;
	if ( m_Bar )
		extent |= m_Bar->m_Rect | m_Bar->m_Band.value_or( m_Bar->m_Rect );
	if ( m_Sigma )
		for ( const QLine &line : m_Sigma->m_Lines )
		{
			const int nMargin = m_Sigma->m_bThick ? 1 : 0; // thick lines are three pixels wide
			extent |= QRect( line.p1(), line.p2() ).normalized().adjusted( -nMargin, 0, nMargin, 0 );
		}
	if ( m_Peak )
		extent |= QPolygon( QVector<QPoint>( m_Peak->begin(), m_Peak->end() ) ).boundingRect();
	return extent;
}

QPointF AlignedTextOrigin( const QRect &box, Qt::Alignment alignment, const QSizeF &size )
{
	QPointF origin = box.topLeft();
	if ( alignment & Qt::AlignRight )
		origin.rx() += box.width() - size.width();
	else if ( alignment & Qt::AlignHCenter )
		origin.rx() += ( box.width() - size.width() ) / 2;
	if ( alignment & Qt::AlignVCenter )
		origin.ry() += ( box.height() - size.height() ) / 2;
	return origin;
}
