// The pictures that the program carries.
#include <gmock/gmock.h>

#include <QDir>
#include <QImage>
#include <QImageReader>

#include "tesselhost.h"

namespace
{
class Images : public testing::TestWithParam<const char *>
{
};

double Lightness( QRgb nColour )
{
	return ( 0.2126 * qRed( nColour ) + 0.7152 * qGreen( nColour ) + 0.0722 * qBlue( nColour ) ) / 255.0;
}

TEST_P( Images, AreThereInTwoSizesAndShowOnDarkAndLightBackgrounds )
{
	RegisterImages();
	const QString path = QString( "game:tools/images/%1.png" ).arg( GetParam() );
	const QString largePath = QString( "game:tools/images/%1@2x.png" ).arg( GetParam() );
	const QImage image = QImage( path ).convertToFormat( QImage::Format_ARGB32 );
	EXPECT_EQ( image.size(), QSize( 24, 24 ) );
	QImageReader largeReader( largePath );
	EXPECT_EQ( largeReader.size(), QSize( 48, 48 ) );
	int nSolid = 0;
	int nOnDark = 0;
	int nOnLight = 0;
	for ( int y = 0; y < image.height(); y++ )
	{
		for ( int x = 0; x < image.width(); x++ )
		{
			const QRgb nPixel = image.pixel( x, y );
			if ( qAlpha( nPixel ) < 200 )
				continue;
			nSolid++;
			nOnDark += Lightness( nPixel ) - Lightness( DarkPalette().color( QPalette::Window ).rgb() ) > 0.15 ? 1 : 0;
			nOnLight +=
				Lightness( LightPalette().color( QPalette::Window ).rgb() ) - Lightness( nPixel ) > 0.15 ? 1 : 0;
		}
	}
	EXPECT_GT( nSolid, 40 );
	EXPECT_LT( nSolid, 24 * 24 ) << "the background shows through";
	EXPECT_GT( nOnDark * 2, nSolid );
	EXPECT_GT( nOnLight * 2, nSolid );
}

INSTANTIATE_TEST_SUITE_P(, Images,
	testing::Values( "showbudgettool/start", "showbudgettool/stop", "showbudgettool/tick",
		"showbudgettool/microprofiler", "showbudgettool/showbudget", "tessel/flamegraph", "common/control_pause",
		"common/control_ff", "common/repeat_multiple", "/common/open", "/common/save", "/common/control_record",
		"/common/control_stop" ) );

TEST( ProgramImage, IsThere )
{
	RegisterImages();
	EXPECT_EQ( QImage( "game:tools/images/tessel/tessel.png" ).size(), QSize( 24, 24 ) );
}
} // namespace
