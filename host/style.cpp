#include "style.h"

#include <QApplication>
#include <QScreen>
#include <QStyleFactory>

#include <array>

namespace
{
constexpr std::array styleNames = { "system", "dark", "light" };

bool IsDark( const QPalette &palette )
{
	return palette.color( QPalette::Window ).lightness() < palette.color( QPalette::WindowText ).lightness();
}

const QPalette &DesktopPalette()
{
	static const QPalette palette = QApplication::palette();
	return palette;
}

struct Shades
{
	QRgb m_nWindow, m_nBase, m_nAlternate, m_nButton, m_nText, m_nDisabled, m_nFaint, m_nHighlight, m_nLink, m_nMid;
	QRgb m_nToolTip;
};

QPalette MakePalette( const Shades &shades )
{
	QPalette palette( QColor( shades.m_nButton ), QColor( shades.m_nWindow ) );
	palette.setColor( QPalette::Window, shades.m_nWindow );
	palette.setColor( QPalette::Base, shades.m_nBase );
	palette.setColor( QPalette::AlternateBase, shades.m_nAlternate );
	palette.setColor( QPalette::Button, shades.m_nButton );
	palette.setColor( QPalette::ToolTipBase, shades.m_nToolTip );
	palette.setColor( QPalette::Mid, shades.m_nMid );
	for ( const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText } )
		palette.setColor( role, shades.m_nText );
	palette.setColor( QPalette::PlaceholderText, shades.m_nFaint );
	palette.setColor( QPalette::BrightText, Qt::white );
	palette.setColor( QPalette::Highlight, shades.m_nHighlight );
	palette.setColor( QPalette::HighlightedText, Qt::white );
	palette.setColor( QPalette::Link, shades.m_nLink );
	for ( const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText } )
		palette.setColor( QPalette::Disabled, role, shades.m_nDisabled );
	palette.setColor( QPalette::Disabled, QPalette::Highlight, shades.m_nMid );
	return palette;
}
} // namespace

const char *StyleName( StyleChoice choice )
{
	return styleNames[static_cast<size_t>( choice )];
}

std::optional<StyleChoice> ParseStyleName( const QString &name )
{
	for ( size_t i = 0; i < styleNames.size(); i++ )
		if ( name == QLatin1String( styleNames[i] ) )
			return static_cast<StyleChoice>( i );
	return std::nullopt;
}

void ApplyStyle( StyleChoice choice )
{
	const bool bDarkDesktop = IsDark( DesktopPalette() ); // asked for before the first change
	const bool bDark = choice == StyleChoice::Dark || ( choice == StyleChoice::System && bDarkDesktop );
	QApplication::setStyle( QStyleFactory::create( QStringLiteral( "Fusion" ) ) );
	QApplication::setPalette( bDark ? DarkPalette() : LightPalette() );
}

bool IsDarkStyleActive()
{
	return IsDark( QApplication::palette() );
}

QPalette DarkPalette()
{
	return MakePalette( {
		.m_nWindow = 0xff2b2d31,
		.m_nBase = 0xff1f2124,
		.m_nAlternate = 0xff26282c,
		.m_nButton = 0xff383b41,
		.m_nText = 0xffe2e4e8,
		.m_nDisabled = 0xff80858d,
		.m_nFaint = 0xff8d939c,
		.m_nHighlight = 0xff2f6fbf,
		.m_nLink = 0xff6db3ff,
		.m_nMid = 0xff4a4e56,
		.m_nToolTip = 0xff3a3d43,
	} );
}

QPalette LightPalette()
{
	return MakePalette( {
		.m_nWindow = 0xfff1f2f4,
		.m_nBase = 0xffffffff,
		.m_nAlternate = 0xfff6f7f9,
		.m_nButton = 0xffebedf0,
		.m_nText = 0xff1e2126,
		.m_nDisabled = 0xff969ba3,
		.m_nFaint = 0xff70767f,
		.m_nHighlight = 0xff2f73c9,
		.m_nLink = 0xff1d5fb4,
		.m_nMid = 0xffc3c7cd,
		.m_nToolTip = 0xfffffbe6,
	} );
}

QColor SeverityColour( LoggingSeverity severity, bool bDark )
{
	switch ( severity )
	{
		case LoggingSeverity::Warning:
			return bDark ? QColor( 0xffe5b94e ) : QColor( 0xff8a5a00 );
		case LoggingSeverity::Error:
			return bDark ? QColor( 0xffff7b72 ) : QColor( 0xffb3261e );
		case LoggingSeverity::Message:
			break;
	}
	return bDark ? QColor( 0xffe2e4e8 ) : QColor( 0xff1e2126 );
}

QColor FaintTextColour( bool bDark )
{
	return bDark ? QColor( 0xff9aa0a9 ) : QColor( 0xff646a73 );
}

float ScreenUIScale()
{
	const QScreen *pScreen = QGuiApplication::primaryScreen();
	const double flScale = pScreen ? pScreen->logicalDotsPerInch() / 96.0 : 1.0;
	return flScale > 0.0 ? static_cast<float>( flScale ) : 1.0f;
}
