// Counts how often a widget is painted.
#pragma once

#include <QEvent>
#include <QObject>
#include <QWidget>

class CPaintCounter final : public QObject
{
public:
	explicit CPaintCounter( QWidget &widget ) { widget.installEventFilter( this ); }

	bool eventFilter( QObject *, QEvent *pEvent ) override
	{
		m_nCount += pEvent->type() == QEvent::Paint ? 1 : 0;
		return false;
	}

	int m_nCount = 0;
};
