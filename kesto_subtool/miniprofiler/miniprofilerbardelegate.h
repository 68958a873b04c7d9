// Paints the cells of the mini-profiler's tree and keeps how they are to look.
#pragma once

#include <QFont>
#include <QStyledItemDelegate>
#include <cstdint>

#include "miniprofiler/miniprofilerbarscale.h"
#include "miniprofiler/miniprofilercelllayout.h"

class CQMiniProfilerBarDelegate final : public QStyledItemDelegate
{
	Q_OBJECT

public:
	CQMiniProfilerBarDelegate( bool bDark, QObject *pParent );
	~CQMiniProfilerBarDelegate() override;

	void paint( QPainter *pPainter, const QStyleOptionViewItem &option, const QModelIndex &index ) const override;

	const MiniProfilerDisplay &Display() const { return m_Display; }
	void SetNumbers( const MiniProfilerNumbers &numbers ) { m_Display.m_Numbers = numbers; }

	// Bars are drawn by these maxima; nNormalised is the number of rows that they are normalised to, or 0.
	void SetBarScale( const MiniProfilerArray &maxima, int nNormalised );

	// Ticks of this process's counter spent in paint() since the last call.
	uint64_t TakePaintTicks();

signals:
	void Changed(); // cells look different now

public slots:
	void OnBarNone();
	void OnBarCalls();
	void OnBarIncFrame();
	void OnBarExcFrame();
	void OnBarIncCall();
	void OnBarExcCall();
	void OnLeftAlign();
	void OnRightAlign();
	void OnCenterAlign();
	void OnTextTransparent( bool bOn );
	void OnTextOpaque();
	void OnDrawBars( bool bOn );
	void OnDrawSigma( bool bOn );
	void OnDrawPeaks( bool bOn );
	void OnHideText( bool bHidden );
	void OnDrawGroupBackgroundColor( bool bOn );

private:
	void SetBarMode( int nColumn );
	void SetAlignment( Qt::Alignment alignment );
	void SetOption( bool MiniProfilerDisplay::*pOption, bool bOn );

	MiniProfilerDisplay m_Display;
	QFont m_SmallFont;
	mutable uint64_t m_nPaintTicks = 0;
};
