#include "miniprofiler/miniprofilerbardelegate.h"

#include <QPainter>
#include <utility>

#include "keel0/platform.h"
#include "miniprofiler/miniprofilercellpainter.h"

CQMiniProfilerBarDelegate::CQMiniProfilerBarDelegate( bool bDark, QObject *pParent )
	: QStyledItemDelegate( pParent )
	, m_SmallFont( QString::fromLatin1( "Arial" ), 6, QFont::Normal, true ) // no literal, as the panel's own
{
	m_Display.m_bDark = bDark;
}

CQMiniProfilerBarDelegate::~CQMiniProfilerBarDelegate() = default;

void CQMiniProfilerBarDelegate::paint(
	QPainter *pPainter, const QStyleOptionViewItem &option, const QModelIndex &index ) const
{
	const uint64_t nStart = Plat_CPUTicks();
	if ( auto *pRow = index.data( Qt::UserRole ).value<CMiniProfilerRow *>() )
	{
		const MiniProfilerCellPlace place{ option.rect, index.column(),
			option.state.testFlag( QStyle::State_MouseOver ), option.state.testFlag( QStyle::State_Selected ) };
		PaintMiniProfilerCell( *pPainter, option.rect, LayoutMiniProfilerCell( *pRow, place, m_Display ),
			MiniProfilerPalette::For( m_Display.m_bDark ), pRow->LaidOutName( pPainter->font() ), m_SmallFont );
	}
	m_nPaintTicks += Plat_CPUTicks() - nStart;
}

void CQMiniProfilerBarDelegate::SetBarScale( const MiniProfilerArray &maxima, int nNormalised )
{
	m_Display.m_BarMaxima = maxima;
	m_Display.m_nNormalised = nNormalised;
}

uint64_t CQMiniProfilerBarDelegate::TakePaintTicks()
{
	return std::exchange( m_nPaintTicks, 0 );
}

void CQMiniProfilerBarDelegate::SetBarMode( int nColumn )
{
	m_Display.m_nBarMode = nColumn;
	emit Changed();
}

void CQMiniProfilerBarDelegate::SetAlignment( Qt::Alignment alignment )
{
	m_Display.m_Alignment = alignment;
	emit Changed();
}

void CQMiniProfilerBarDelegate::SetOption( bool MiniProfilerDisplay::*pOption, bool bOn )
{
	m_Display.*pOption = bOn;
	emit Changed();
}

void CQMiniProfilerBarDelegate::OnBarNone()
{
	SetBarMode( MINIPROFILER_NAME );
}

void CQMiniProfilerBarDelegate::OnBarCalls()
{
	SetBarMode( MINIPROFILER_CALLS );
}

void CQMiniProfilerBarDelegate::OnBarIncFrame()
{
	SetBarMode( MINIPROFILER_INCLUSIVE );
}

void CQMiniProfilerBarDelegate::OnBarExcFrame()
{
	SetBarMode( MINIPROFILER_EXCLUSIVE );
}

void CQMiniProfilerBarDelegate::OnBarIncCall()
{
	SetBarMode( MINIPROFILER_INCLUSIVE_CALL );
}

void CQMiniProfilerBarDelegate::OnBarExcCall()
{
	SetBarMode( MINIPROFILER_EXCLUSIVE_CALL );
}

void CQMiniProfilerBarDelegate::OnLeftAlign()
{
	SetAlignment( Qt::AlignLeft );
}

void CQMiniProfilerBarDelegate::OnRightAlign()
{
	SetAlignment( Qt::AlignRight );
}

void CQMiniProfilerBarDelegate::OnCenterAlign()
{
	SetAlignment( Qt::AlignHCenter | Qt::AlignVCenter );
}

void CQMiniProfilerBarDelegate::OnTextTransparent( bool bOn )
{
	SetOption( &MiniProfilerDisplay::m_bNameTransparent, bOn );
}

void CQMiniProfilerBarDelegate::OnTextOpaque()
{
	OnTextTransparent( false );
}

void CQMiniProfilerBarDelegate::OnDrawBars( bool bOn )
{
	SetOption( &MiniProfilerDisplay::m_bDrawBars, bOn );
}

void CQMiniProfilerBarDelegate::OnDrawSigma( bool bOn )
{
	SetOption( &MiniProfilerDisplay::m_bDrawSigmas, bOn );
}

void CQMiniProfilerBarDelegate::OnDrawPeaks( bool bOn )
{
	SetOption( &MiniProfilerDisplay::m_bDrawPeaks, bOn );
}

void CQMiniProfilerBarDelegate::OnHideText( bool bHidden )
{
	SetOption( &MiniProfilerDisplay::m_bTextVisible, !bHidden );
}

void CQMiniProfilerBarDelegate::OnDrawGroupBackgroundColor( bool bOn )
{
	SetOption( &MiniProfilerDisplay::m_bGroupColours, bOn );
}
