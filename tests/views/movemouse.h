// A mouse move as the window system delivers it while the left button is held. QTest::mouseMove moves the real pointer,
// which an offscreen platform does not have.
#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>

inline void MoveMouse( QWidget *pWidget, const QPoint &ptMouse )
{
	QMouseEvent event(
		QEvent::MouseMove, ptMouse, pWidget->mapToGlobal( ptMouse ), Qt::NoButton, Qt::LeftButton, Qt::NoModifier );
	QApplication::sendEvent( pWidget, &event );
}
