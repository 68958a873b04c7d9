#include "views/viewpainter.h"

#include <gtest/gtest.h>

#include <QImage>
#include <cstdlib>

#include "support/randomseed.h"
#include "views/stripfixture.h"

namespace
{
// Of 255, per channel: the engine rounds a glyph's edges differently on opaque and on transparent ground. A glyph that
// is one pixel off differs by far more.
constexpr int TOLERANCE = 6;

// Draws recorded operations with a plain QPainter.
void Replay( QPainter &painter, const PaintOp &op )
{
	const int nPoints = static_cast<int>( op.m_Points.size() );
	painter.save();
	if ( op.m_Clip )
		painter.setClipRect( *op.m_Clip );
	painter.setPen( op.m_PenStyle == Qt::NoPen ? QPen( Qt::NoPen )
											   : QPen( QBrush( op.m_Colour ), op.m_flPenWidth, op.m_PenStyle ) );
	painter.setBrush( op.m_BrushStyle == Qt::NoBrush ? QBrush() : QBrush( op.m_Colour, op.m_BrushStyle ) );
	switch ( op.m_Kind )
	{
		case PaintOp::Kind::FillRect:
			painter.fillRect( op.m_Rect, painter.brush() );
			break;
		case PaintOp::Kind::OutlineRect:
			painter.drawRect( op.m_Rect );
			break;
		case PaintOp::Kind::Line:
			painter.drawLine( op.m_Points[0], op.m_Points[1] );
			break;
		case PaintOp::Kind::FillPolygon:
		case PaintOp::Kind::OutlinePolygon:
			painter.drawPolygon( op.m_Points.data(), nPoints );
			break;
		case PaintOp::Kind::Polyline:
			painter.drawPolyline( op.m_Points.data(), nPoints );
			break;
		case PaintOp::Kind::Text:
			painter.setFont( op.m_Font );
			painter.setPen( op.m_Colour );
			painter.drawText(
				QPointF( op.m_Rect.x(), op.m_Rect.y() + QFontMetricsF( op.m_Font ).ascent() ), op.m_Text );
			break;
		default:
			FAIL() << "not an operation of these views: " << op;
	}
	painter.restore();
}

QImage Canvas( const QSize &size, const QColor &ground )
{
	QImage image( size, QImage::Format_ARGB32_Premultiplied );
	image.fill( ground );
	return image;
}

int Distance( QRgb a, QRgb b )
{
	return std::max( { std::abs( qRed( a ) - qRed( b ) ), std::abs( qGreen( a ) - qGreen( b ) ),
		std::abs( qBlue( a ) - qBlue( b ) ), std::abs( qAlpha( a ) - qAlpha( b ) ) } );
}

void ExpectSamePicture( const QImage &actual, const QImage &expected )
{
	ASSERT_EQ( actual.size(), expected.size() );
	int nDifferent = 0;
	for ( int y = 0; y < actual.height(); y++ )
	{
		for ( int x = 0; x < actual.width(); x++ )
		{
			if ( Distance( actual.pixel( x, y ), expected.pixel( x, y ) ) > TOLERANCE && nDifferent++ < 5 )
				ADD_FAILURE() << "pixel " << x << ", " << y << " is " << std::hex << actual.pixel( x, y )
							  << " instead of " << expected.pixel( x, y );
		}
	}
	EXPECT_EQ( nDifferent, 0 );
}

// A widget's picture against a replay of what it draws on a device without shortcuts. Painted twice: the second time
// everything that can be kept is.
void ExpectNoShortcutShows( QWidget &widget, const QColor &ground )
{
	QImage expected = Canvas( widget.size(), ground );
	{
		QPainter painter( &expected );
		for ( const PaintOp &op : CPaintLog::OfWidget( widget ) )
			Replay( painter, op );
	}
	for ( int nTime = 0; nTime < 2; nTime++ )
	{
		SCOPED_TRACE( nTime );
		QImage actual = Canvas( widget.size(), ground );
		widget.render( &actual, QPoint(), QRegion(), QWidget::RenderFlags() );
		ExpectSamePicture( actual, expected );
	}
}
} // namespace

TEST( ViewPainter, DrawsNamesAsQPainterDoes )
{
	for ( const bool bDark : { false, true } )
	{
		CFakeBudgetViewOwner owner( 20, bDark );
		owner.m_Categories[1].m_Name = "Überlänge: ein Name, der in keine Spalte passt, wie breit sie auch sei";
		owner.m_Categories[2].m_Name = "日本語 mixed with Latin";
		owner.m_Categories[3].m_Name = "f(x) AVAWAT ffi";
		owner.m_Categories[6].m_Name = "&File <b>bold</b> &amp;\x01\n\xE2\x80\xAE tail \xFF";
		owner.m_Categories[4].m_Colour = QColor( 200, 40, 40, 128 );
		CStrip strip( owner, QSize( 900, 400 ) );
		ExpectNoShortcutShows( strip.Names(), bDark ? QColor( 45, 45, 48 ) : QColor( Qt::white ) );
	}
}

// Which word of such a text comes first depends on the direction of the painter that it is drawn with.
TEST( ViewPainter, DrawsTextsOfTwoDirectionsAsQPainterDoes )
{
	constexpr int FLAGS = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine;
	const QRect box( 5, 2, 280, 22 );
	for ( const Qt::LayoutDirection direction : { Qt::LeftToRight, Qt::RightToLeft } )
	{
		QImage expected = Canvas( QSize( 300, 30 ), Qt::white );
		QImage actual = expected;
		const QString text = QString::fromUtf8( "שלום, Latin behind (1) שלום" );
		{
			QPainter painter( &expected );
			painter.setLayoutDirection( direction );
			painter.drawText( box, FLAGS | Qt::AlignAbsolute, text );
		}
		{
			QPainter painter( &actual );
			painter.setLayoutDirection( direction );
			CStampCache stamps;
			CViewPainter( painter, stamps ).DrawText( box, FLAGS | Qt::AlignAbsolute, text );
			EXPECT_GT( stamps.Size(), 0 ) << "the text is stamped";
		}
		ExpectSamePicture( actual, expected );
	}
}

TEST( ViewPainter, DrawsBarsAsQPainterDoes )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	for ( const int nZoomStep : { -20, -19, 0, 20 } )
	{
		for ( unsigned nFlags = 0; nFlags < 4; nFlags++ )
		{
			SCOPED_TRACE( testing::Message() << "zoom " << nZoomStep << ", flags " << nFlags );
			CFakeBudgetViewOwner owner( 64, nFlags & 1 );
			owner.m_Settings.SetInt( "samples_scale", nZoomStep );
			owner.m_Data.m_bFPSUnits = nFlags & 2;
			owner.FillRings( random, 60'000 );
			owner.SetValue( 3, 99, 0 ); // no bar
			owner.SetPeak( 4, 0 );
			owner.m_Categories[5].m_Colour = QColor( 40, 200, 40, 128 );
			owner.m_Data.m_nSampleCount = 100;
			CStrip strip( owner, QSize( 1200, 400 ) );
			ExpectNoShortcutShows( strip.Bars(), nFlags & 1 ? QColor( 45, 45, 48 ) : QColor( Qt::white ) );
		}
	}
}

TEST( ViewPainter, DrawsWhiskersThatBeginFarOutsideAsQPainterDoes )
{
	CFakeBudgetViewOwner owner( 2, true );
	owner.m_Data.m_nSampleCount = 32;
	owner.SetValue( 0, 31, 500'000 );
	CStrip strip( owner, QSize( 900, 300 ) );
	ExpectNoShortcutShows( strip.Bars(), Qt::black );
}

TEST( ViewPainter, HandsEveryOperationOnWhereAUnitIsNotAPixel )
{
	const auto draw = []( QPainter &painter )
	{
		CStampCache stamps;
		CViewPainter viewPainter( painter, stamps );
		viewPainter.SetFont( QFont( "Verdana", 9 ) );
		viewPainter.SetPen( Qt::black );
		viewPainter.SetBrush( Qt::red );
		viewPainter.DrawRect( QRect( 2, 2, 30, 10 ) );
		viewPainter.DrawLine( 5, 20, 40, 20 );
		viewPainter.DrawText( QRect( 2, 22, 80, 20 ), Qt::AlignCenter, "5 ms" );
		viewPainter.FillRect( QRect( 2, 45, 30, 10 ), Qt::blue, Qt::Dense4Pattern );
	};
	QImage actual = Canvas( QSize( 200, 120 ), Qt::white );
	actual.setDevicePixelRatio( 2 );
	QImage expected = actual;
	{
		QPainter painter( &actual );
		draw( painter );
	}
	{
		QPainter painter( &expected );
		painter.setFont( QFont( "Verdana", 9 ) );
		painter.setBrush( Qt::red );
		painter.setPen( Qt::black );
		painter.drawRect( QRect( 2, 2, 30, 10 ) );
		painter.drawLine( 5, 20, 40, 20 );
		painter.drawText( QRect( 2, 22, 80, 20 ), Qt::AlignCenter, "5 ms" );
		painter.fillRect( QRect( 2, 45, 30, 10 ), QBrush( Qt::blue, Qt::Dense4Pattern ) );
	}
	EXPECT_EQ( actual, expected );
}

TEST( ViewPainter, RespectsTheClip )
{
	QImage image = Canvas( QSize( 100, 40 ), Qt::white );
	CStampCache stamps;
	QPainter painter( &image );
	painter.setClipRect( 0, 0, 50, 40 );
	CViewPainter viewPainter( painter, stamps );
	viewPainter.SetPen( Qt::black );
	viewPainter.SetFont( QFont( "Courier New", 10 ) );
	viewPainter.DrawRect( QRect( 40, 5, 30, 10 ) );
	viewPainter.DrawText( QRect( 0, 20, 100, 20 ), Qt::AlignRight | Qt::AlignVCenter, "0123456789" );
	painter.end();
	bool bInk = false;
	for ( int y = 0; y < 40; y++ )
	{
		for ( int x = 0; x < 100; x++ )
		{
			const bool bWhite = image.pixel( x, y ) == qRgb( 255, 255, 255 );
			ASSERT_TRUE( x < 50 || bWhite ) << x << ", " << y;
			bInk = bInk || !bWhite;
		}
	}
	EXPECT_TRUE( bInk );
}

TEST( ViewPainter, KeepsWhatItStampsWithinItsLimit )
{
	QImage image = Canvas( QSize( 400, 40 ), Qt::white );
	CStampCache stamps;
	QPainter painter( &image );
	CViewPainter viewPainter( painter, stamps );
	viewPainter.SetFont( QFont( "Verdana", 9 ) );
	for ( int i = 0; i < 3000; i++ )
		viewPainter.DrawText( QRect( 0, 0, 400, 30 ), Qt::AlignLeft | Qt::AlignVCenter,
			QString( "A text that is drawn once and never again, number %1" ).arg( i ) );
	EXPECT_LE( stamps.Size(), CStampCache::LIMIT );
	EXPECT_GT( stamps.Size(), CStampCache::LIMIT / 2 );
}
