// The sunken frame that every budget view sits in.
#pragma once

#include <QFrame>

class CQFramedPanel : public QFrame
{
	Q_OBJECT

public:
	// Takes pChild (not null) over and keeps it 4 pixels inside the frame.
	explicit CQFramedPanel( QWidget *pChild, QWidget *pParent = nullptr );

protected:
	// Paints what QFrame does, with filled rectangles: the raster engine takes milliseconds for the same lines, and the
	// frames are painted with every sample.
	void paintEvent( QPaintEvent *pEvent ) override;
};
