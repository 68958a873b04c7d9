// Whether bytes are what Qt's save functions write.
//
// Qt's restore functions believe the counts and places that they read: four changed bytes make them ask for gigabytes,
// run for minutes or write beside an array. So nothing gets there that was not walked through here first, with every
// count covered by bytes and every number in the range that a layout can have.
#pragma once

#include <QByteArray>

bool IsWindowGeometry( const QByteArray &bytes );  // QWidget::saveGeometry
bool IsMainWindowState( const QByteArray &bytes ); // QMainWindow::saveState, without docks that share a floating frame
bool IsSplitterState( const QByteArray &bytes );   // QSplitter::saveState
