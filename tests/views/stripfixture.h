// A samples strip on the screen, and its parts.
#pragma once

#include <QApplication>
#include <QScrollBar>

#include "views/budgetbarswidget.h"
#include "views/budgetnameswidget.h"
#include "views/budgetsampleswidget.h"
#include "views/expectedpainting.h"

class CStrip
{
public:
	CStrip( CFakeBudgetViewOwner &owner, const QSize &size )
		: m_Widget( owner, nullptr )
	{
		m_Widget.resize( size );
		m_Widget.setAttribute( Qt::WA_DontShowOnScreen );
		m_Widget.show();
		QApplication::processEvents();
	}

	CQBudgetSamplesWidget &Widget() { return m_Widget; }
	CQBudgetNamesWidget &Names() { return *m_Widget.findChild<CQBudgetNamesWidget *>(); }
	CQBudgetBarsWidget &Bars() { return *m_Widget.findChild<CQBudgetBarsWidget *>(); }
	QScrollBar &ScrollBar() { return *Bars().findChild<QScrollBar *>(); }

	ExpectedPanel NamesPanel() { return Panel( Names() ); }
	ExpectedPanel BarsPanel() { return Panel( Bars() ); }

private:
	ExpectedPanel Panel( const QWidget &widget )
	{
		const bool bScrolls = ScrollBar().isVisible();
		return { widget.width(), widget.height(), bScrolls ? ScrollBar().width() : 0,
			bScrolls ? ScrollBar().value() : 0, Bars().ZoomStep() };
	}

	CQBudgetSamplesWidget m_Widget;
};
