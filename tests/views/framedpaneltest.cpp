#include <gtest/gtest.h>

#include <QVBoxLayout>

#include "views/framedpanel.h"

TEST( FramedPanel, IsASunkenBoxWithAMidLine )
{
	CQFramedPanel panel( new QWidget );
	EXPECT_EQ( panel.frameShape(), QFrame::Box );
	EXPECT_EQ( panel.frameShadow(), QFrame::Sunken );
	EXPECT_EQ( panel.lineWidth(), 1 );
	EXPECT_EQ( panel.midLineWidth(), 2 );
}

TEST( FramedPanel, OwnsItsChildAndKeepsItFourPixelsInside )
{
	auto *pChild = new QWidget;
	CQFramedPanel panel( pChild );
	EXPECT_EQ( pChild->parentWidget(), &panel );
	EXPECT_EQ( panel.layout()->contentsMargins(), QMargins( 4, 4, 4, 4 ) );

	panel.resize( 100, 80 );
	panel.layout()->activate();
	const int nFrame = 1 + 2 + 1; // line, mid-line, line
	EXPECT_EQ(
		pChild->geometry(), QRect( 0, 0, 100, 80 ).adjusted( 4 + nFrame, 4 + nFrame, -4 - nFrame, -4 - nFrame ) );
}

TEST( FramedPanel, LooksAsAFrameOfItsKindDoes )
{
	for ( const bool bDark : { false, true } )
	{
		QPalette palette;
		if ( bDark )
			palette = QPalette( QColor( 60, 60, 64 ), QColor( 45, 45, 48 ) );
		CQFramedPanel panel( new QWidget );
		QFrame frame;
		frame.setFrameShape( QFrame::Box );
		frame.setFrameShadow( QFrame::Sunken );
		frame.setLineWidth( 1 );
		frame.setMidLineWidth( 2 );
		for ( QFrame *pFrame : { static_cast<QFrame *>( &panel ), &frame } )
		{
			pFrame->setPalette( palette );
			pFrame->resize( 123, 77 );
		}
		EXPECT_EQ( panel.grab().toImage(), frame.grab().toImage() ) << ( bDark ? "dark" : "light" );
	}
}
