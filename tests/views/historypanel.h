// The history panel as tests use it.
#pragma once

#include <QApplication>
#include <QLabel>
#include <QScrollBar>
#include <QtTest>

#include <algorithm>

#include "views/budgethistorybarswidget.h"
#include "views/budgethistorywidget.h"
#include "views/fakehistoryowner.h"
#include "views/fpsgraphwidget.h"

// A shown history panel of 600 by 400 pixels.
struct Panel
{
	explicit Panel( uint32_t nSamples = 0, float flUIScale = 1.0f )
		: m_Owner( 3, flUIScale )
		, m_Widget( m_Owner, nullptr )
		, m_Bars( *m_Widget.findChild<CQBudgetHistoryBarsWidget *>() )
		, m_Graph( *m_Widget.findChild<CQFPSGraphWidget *>() )
		, m_ScrollBar( *m_Widget.findChild<QScrollBar *>() )
		, m_Label( *dynamic_cast<QLabel *>( m_Owner.m_pCursorLabel ) )
	{
		m_Owner.m_StatusBar.show();
		m_Widget.resize( 600, 400 );
		m_Widget.show();
		QApplication::processEvents();
		Add( nSamples );
	}

	void Add( uint32_t nSamples )
	{
		for ( uint32_t i = 0; i < nSamples; i++ )
			m_Owner.AddSample( { 5000, 3000 + m_Owner.m_Data.m_nSampleCount % 500, 2000 } );
	}

	int Pitch() const { return m_Owner.m_Style.m_flUIScale > 1.0f ? 8 : 6; }

	// Columns that fit, by the rule.
	int Visible() const
	{
		const int nLabel = QFontMetrics( m_Owner.m_Style.m_RowFont ).horizontalAdvance( "00.00 fps" );
		return std::max( 0, ( std::min( m_Bars.width(), m_Graph.width() ) - nLabel ) / Pitch() );
	}

	// The middle of a column as the mouse counts them, from the left.
	QPoint AtColumn( int nColumn ) const { return QPoint( nColumn * Pitch() + Pitch() / 2, 40 ); }

	void Press( int nKey, Qt::KeyboardModifiers modifiers = Qt::NoModifier )
	{
		QTest::keyClick( &m_Widget, static_cast<Qt::Key>( nKey ), modifiers );
	}

	CFakeHistoryOwner m_Owner;
	CQBudgetHistoryWidget m_Widget;
	CQBudgetHistoryBarsWidget &m_Bars;
	CQFPSGraphWidget &m_Graph;
	QScrollBar &m_ScrollBar;
	QLabel &m_Label;
};
