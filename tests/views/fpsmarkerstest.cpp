#include "views/fpsmarkers.h"

#include <gtest/gtest.h>

#include <limits>

#include "keel0/keyvalues.h"
#include "views/fpsgraphlayout.h"

namespace
{
FPSMarkers Markers( float flLower, float flUpper )
{
	FPSMarkers markers;
	markers.m_flLower = flLower;
	markers.m_flUpper = flUpper;
	return markers;
}
} // namespace

TEST( FPSMarkers, StartAtThirtyAndSixty )
{
	KeyValues settings( "settings" );
	EXPECT_EQ( FPSMarkers::Load( nullptr ), Markers( 30.0f, 60.0f ) );
	EXPECT_EQ( FPSMarkers::Load( &settings ), Markers( 30.0f, 60.0f ) );
}

TEST( FPSMarkers, AreTruncatedAndClampedOnLoad )
{
	constexpr float INFINITE = std::numeric_limits<float>::infinity();
	const float expectations[][2] = { { 0.0f, 1.0f }, { 500.0f, 300.0f }, { 59.7f, 59.0f }, { 1.0f, 1.0f },
		{ 300.0f, 300.0f }, { 300.9f, 300.0f }, { 0.9f, 1.0f }, { -20.0f, 1.0f }, { INFINITE, 300.0f },
		{ -INFINITE, 1.0f } };
	for ( const auto &[flSaved, flExpected] : expectations )
	{
		KeyValues settings( "settings" );
		settings.SetFloat( "fps_upper_marker", flSaved );
		EXPECT_EQ( FPSMarkers::Load( &settings ), Markers( 30.0f, flExpected ) ) << flSaved;
		KeyValues others( "settings" );
		others.SetFloat( "fps_lower_marker", flSaved );
		EXPECT_EQ( FPSMarkers::Load( &others ), Markers( flExpected, 60.0f ) ) << flSaved;
	}
}

TEST( FPSMarkers, WhatIsNoNumberLoadsAsTheDefault )
{
	KeyValues settings( "settings" );
	settings.SetString( "fps_upper_marker", "nan" );
	settings.SetString( "fps_lower_marker", "low" );
	EXPECT_EQ( FPSMarkers::Load( &settings ), Markers( 30.0f, 60.0f ) );
}

TEST( FPSMarkers, ComeBackFromTheSettings )
{
	KeyValues settings( "settings" );
	Markers( 17.0f, 144.0f ).Save( settings );
	EXPECT_EQ( settings.GetFloat( "fps_upper_marker" ), 144.0f );
	EXPECT_EQ( settings.GetFloat( "fps_lower_marker" ), 17.0f );
	EXPECT_EQ( FPSMarkers::Load( &settings ), Markers( 17.0f, 144.0f ) );
}

TEST( FPSMarkers, UpperOnePushesTheLowerOneFromTheSameRateOn )
{
	FPSMarkers markers = Markers( 30.0f, 60.0f );
	EXPECT_TRUE( markers.DragUpper( 31.0f ) );
	EXPECT_EQ( markers, Markers( 30.0f, 31.0f ) );
	EXPECT_TRUE( markers.DragUpper( 30.0f ) );
	EXPECT_EQ( markers, Markers( 25.0f, 30.0f ) );
	EXPECT_TRUE( markers.DragUpper( 10.0f ) );
	EXPECT_EQ( markers, Markers( 5.0f, 10.0f ) );
	EXPECT_TRUE( markers.DragUpper( 3.0f ) );
	EXPECT_EQ( markers, Markers( 1.0f, 3.0f ) );
	EXPECT_TRUE( markers.DragUpper( 1.0f ) );
	EXPECT_EQ( markers, Markers( 1.0f, 1.0f ) );
}

TEST( FPSMarkers, LowerOnePushesTheUpperOneFromTheSameRateOn )
{
	FPSMarkers markers = Markers( 30.0f, 60.0f );
	EXPECT_TRUE( markers.DragLower( 59.0f ) );
	EXPECT_EQ( markers, Markers( 59.0f, 60.0f ) );
	EXPECT_TRUE( markers.DragLower( 60.0f ) );
	EXPECT_EQ( markers, Markers( 60.0f, 65.0f ) );
	EXPECT_TRUE( markers.DragLower( 290.0f ) );
	EXPECT_EQ( markers, Markers( 290.0f, 295.0f ) );
	EXPECT_TRUE( markers.DragLower( 298.0f ) );
	EXPECT_EQ( markers, Markers( 298.0f, 300.0f ) );
	EXPECT_TRUE( markers.DragLower( 300.0f ) );
	EXPECT_EQ( markers, Markers( 300.0f, 300.0f ) );
}

TEST( FPSMarkers, DraggingToWhereAMarkerStandsChangesNothing )
{
	FPSMarkers markers = Markers( 60.0f, 60.0f );
	EXPECT_FALSE( markers.DragUpper( 60.0f ) );
	EXPECT_FALSE( markers.DragLower( 60.0f ) );
	EXPECT_EQ( markers, Markers( 60.0f, 60.0f ) );
}

TEST( FPSMarkerGeometry, OnePixelIsHalfAFrameOverTheZoomFactor )
{
	EXPECT_EQ( FPSMarkerRateAt( 200 - 100, 200, 0 ), 30.0f ); // 100 / 2 / 1.65 is 30.3
	EXPECT_EQ( FPSMarkerRateAt( 200 - 102, 200, 0 ), 30.0f );
	EXPECT_EQ( FPSMarkerRateAt( 200 - 103, 200, 0 ), 31.0f );
	EXPECT_EQ( FPSMarkerRateAt( 200 - 120, 200, 5 ), 20.0f );
	EXPECT_EQ( FPSMarkerRateAt( 200, 200, 0 ), 1.0f );
	EXPECT_EQ( FPSMarkerRateAt( 10000, 200, 0 ), 1.0f );
	EXPECT_EQ( FPSMarkerRateAt( -10000, 200, 0 ), 300.0f );
}

// The painted height truncates the difference, the mouse's truncates the length.
TEST( FPSMarkerGeometry, PaintedAndGrabbedHeightsDifferWhereTheLengthIsNoWholeNumber )
{
	EXPECT_EQ( FPSMarkerPaintedY( 31.0f, 500, 0 ), 397 ); // 500 - 102.3
	EXPECT_EQ( FPSMarkerGrabY( 31.0f, 500, 0 ), 398 );    // 500 - 102
	EXPECT_EQ( FPSMarkerPaintedY( 50.0f, 500, 5 ), 200 );
	EXPECT_EQ( FPSMarkerGrabY( 50.0f, 500, 5 ), 200 );
}

TEST( FPSMarkerGeometry, HandlesAreSixteenPixelsAtBothEnds )
{
	const QSize size( 400, 500 );
	const FPSMarkers markers = Markers( 30.0f, 100.0f ); // at zoom 5 six pixels a frame: y 320 and -100
	const auto At = [&]( int x, int y ) { return FPSMarkerHandleAt( markers, QPoint( x, y ), size, 5 ); };
	for ( const int x : { 0, 15, 384, 399 } )
	{
		EXPECT_EQ( At( x, 312 ), FPSMarkerHandle::Lower ) << x;
		EXPECT_EQ( At( x, 327 ), FPSMarkerHandle::Lower ) << x;
		EXPECT_EQ( At( x, 311 ), FPSMarkerHandle::None ) << x;
		EXPECT_EQ( At( x, 328 ), FPSMarkerHandle::None ) << x;
		EXPECT_EQ( At( x, -100 ), FPSMarkerHandle::Upper ) << x;
	}
	for ( const int x : { -1, 16, 383, 400 } )
		EXPECT_EQ( At( x, 320 ), FPSMarkerHandle::None ) << x;
}

TEST( FPSMarkerGeometry, UpperHandleWinsWhereBothLie )
{
	const FPSMarkers markers = Markers( 30.0f, 31.0f );
	EXPECT_EQ( FPSMarkerHandleAt( markers, QPoint( 5, 318 ), QSize( 400, 500 ), 5 ), FPSMarkerHandle::Upper );
	EXPECT_EQ( FPSMarkerHandleAt( markers, QPoint( 5, 325 ), QSize( 400, 500 ), 5 ), FPSMarkerHandle::Lower );
}
