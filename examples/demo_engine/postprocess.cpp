#define SHOWBUDGET_PROJECT "renderer"
#include "postprocess.h"

#include <algorithm>

#include "budgets.h"

namespace demo
{
namespace
{
// The mean of the pixels within nRadius, with a sum that slides along the line.
void BlurLine( const Pixel *pFrom, Pixel *pTo, int nCount, int nStep, int nRadius )
{
	const auto At = [&]( int i ) { return pFrom + std::clamp( i, 0, nCount - 1 ) * nStep; };
	const float flScale = 1.0f / static_cast<float>( 2 * nRadius + 1 );
	Pixel sum{};
	for ( int i = -nRadius; i <= nRadius; i++ )
	{
		sum.r += At( i )->r;
		sum.g += At( i )->g;
		sum.b += At( i )->b;
	}
	for ( int i = 0; i < nCount; i++ )
	{
		pTo[i * nStep] = { sum.r * flScale, sum.g * flScale, sum.b * flScale };
		const Pixel *pNew = At( i + nRadius + 1 );
		const Pixel *pOld = At( i - nRadius );
		sum.r += pNew->r - pOld->r;
		sum.g += pNew->g - pOld->g;
		sum.b += pNew->b - pOld->b;
	}
}
} // namespace

void CPostProcess::Apply( std::vector<Pixel> &picture )
{
	SHOWBUDGET_SCOPE( g_PostProcess, "Post process" );
	TakeBrightParts( picture );
	BlurRows();
	BlurColumns();
	AddGlow( picture );
	MeasureLight( picture );
	MapTones( picture );
}

void CPostProcess::TakeBrightParts( const std::vector<Pixel> &picture )
{
	SHOWBUDGET_SCOPE( g_PostProcess, "Bright parts" );
	m_Glow.resize( GLOW_WIDTH * GLOW_HEIGHT );
	const auto Bright = []( float flValue ) { return std::max( 0.0f, flValue - 0.8f ); };
	for ( int y = 0; y < GLOW_HEIGHT; y++ )
	{
		for ( int x = 0; x < GLOW_WIDTH; x++ )
		{
			const Pixel &pixel = picture[static_cast<size_t>( 2 * y * CRenderer::WIDTH + 2 * x )];
			m_Glow[static_cast<size_t>( y * GLOW_WIDTH + x )] = {
				Bright( pixel.r ), Bright( pixel.g ), Bright( pixel.b ) };
		}
	}
}

void CPostProcess::BlurRows()
{
	SHOWBUDGET_SCOPE( g_PostProcess, "Blur rows" );
	m_Blurred.resize( m_Glow.size() );
	for ( int y = 0; y < GLOW_HEIGHT; y++ )
		BlurLine( m_Glow.data() + y * GLOW_WIDTH, m_Blurred.data() + y * GLOW_WIDTH, GLOW_WIDTH, 1, GLOW_RADIUS );
}

void CPostProcess::BlurColumns()
{
	SHOWBUDGET_SCOPE( g_PostProcess, "Blur columns" );
	for ( int x = 0; x < GLOW_WIDTH; x++ )
		BlurLine( m_Blurred.data() + x, m_Glow.data() + x, GLOW_HEIGHT, GLOW_WIDTH, GLOW_RADIUS );
}

void CPostProcess::AddGlow( std::vector<Pixel> &picture ) const
{
	SHOWBUDGET_SCOPE( g_PostProcess, "Add glow" );
	for ( int y = 0; y < CRenderer::HEIGHT; y++ )
	{
		for ( int x = 0; x < CRenderer::WIDTH; x++ )
		{
			const Pixel &glow = m_Glow[static_cast<size_t>( y / 2 * GLOW_WIDTH + x / 2 )];
			Pixel &pixel = picture[static_cast<size_t>( y * CRenderer::WIDTH + x )];
			pixel.r += glow.r;
			pixel.g += glow.g;
			pixel.b += glow.b;
		}
	}
}

void CPostProcess::MeasureLight( const std::vector<Pixel> &picture )
{
	SHOWBUDGET_SCOPE( g_PostProcess, "Measure light" );
	float flSum = 0.0f;
	for ( const Pixel &pixel : picture )
		flSum += 0.3f * pixel.r + 0.6f * pixel.g + 0.1f * pixel.b;
	m_flLight += 0.05f * ( flSum / static_cast<float>( picture.size() ) - m_flLight );
}

void CPostProcess::MapTones( const std::vector<Pixel> &picture )
{
	SHOWBUDGET_SCOPE( g_PostProcess, "Map tones" );
	m_Screen.resize( picture.size() );
	const float flExposure = 0.6f / std::max( 0.1f, m_flLight );
	const auto Map = [flExposure]( float flValue )
	{
		const float flExposed = flValue * flExposure;
		return static_cast<uint32_t>( 255.0f * flExposed / ( 1.0f + flExposed ) );
	};
	for ( size_t i = 0; i < picture.size(); i++ )
		m_Screen[i] = Map( picture[i].r ) | Map( picture[i].g ) << 8 | Map( picture[i].b ) << 16;
}
} // namespace demo
