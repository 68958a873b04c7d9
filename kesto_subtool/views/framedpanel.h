// The sunken frame that every budget view sits in.
#pragma once

#include <QFrame>

class CQFramedPanel : public QFrame
{
public:
	// Takes pChild (not null) over and keeps it 4 pixels inside the frame.
	explicit CQFramedPanel( QWidget *pChild, QWidget *pParent = nullptr );
};
