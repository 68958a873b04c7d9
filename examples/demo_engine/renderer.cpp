#define SHOWBUDGET_PROJECT "renderer"
#include "renderer.h"

#include <algorithm>
#include <numbers>

#include "budgets.h"

namespace demo
{
namespace
{
constexpr float FAR_AWAY = 1.0e9f;
constexpr float PIXELS_PER_UNIT = CRenderer::HEIGHT * 0.9f; // at distance 1
const Vector TO_LIGHT = Normalised( { 0.5f, 0.8f, -0.4f } );

float ScreenX( const Vector &view )
{
	return CRenderer::WIDTH * 0.5f + view.x / view.z * PIXELS_PER_UNIT;
}
float ScreenY( const Vector &view )
{
	return CRenderer::HEIGHT * 0.5f - view.y / view.z * PIXELS_PER_UNIT;
}

Pixel ColourOf( uint32_t nColour, float flLight )
{
	const auto Part = [&]( int nShift )
	{ return ( 0.3f + 0.7f * static_cast<float>( nColour >> nShift & 0xFF ) / 255.0f ) * flLight; };
	return { Part( 0 ), Part( 8 ), Part( 16 ) };
}
} // namespace

CRenderer::CRenderer()
	: m_Meshes{ MakeBall( 6, 9 ), MakeBall( 4, 6 ), MakeBall( 2, 4 ) }
	, m_Tiles( TILE_COLUMNS * TILE_ROWS )
	, m_Picture( WIDTH * HEIGHT )
	, m_Depth( WIDTH * HEIGHT )
{
}

CRenderer::Mesh CRenderer::MakeBall( int nRings, int nSegments )
{
	Mesh mesh;
	constexpr float PI = std::numbers::pi_v<float>;
	for ( int nRing = 0; nRing <= nRings; nRing++ )
	{
		const float flUp = PI * static_cast<float>( nRing ) / static_cast<float>( nRings );
		for ( int nSegment = 0; nSegment < nSegments; nSegment++ )
		{
			const float flRound = 2.0f * PI * static_cast<float>( nSegment ) / static_cast<float>( nSegments );
			mesh.m_Corners.push_back(
				{ std::sin( flUp ) * std::cos( flRound ), std::cos( flUp ), std::sin( flUp ) * std::sin( flRound ) } );
		}
	}
	for ( int nRing = 0; nRing < nRings; nRing++ )
	{
		for ( int nSegment = 0; nSegment < nSegments; nSegment++ )
		{
			const int nNext = ( nSegment + 1 ) % nSegments;
			const int corners[6] = { nRing * nSegments + nSegment, nRing * nSegments + nNext,
				( nRing + 1 ) * nSegments + nSegment, nRing * nSegments + nNext, ( nRing + 1 ) * nSegments + nNext,
				( nRing + 1 ) * nSegments + nSegment };
			for ( const int nCorner : corners )
				mesh.m_Triangles.push_back( static_cast<uint32_t>( nCorner ) );
		}
	}
	return mesh;
}

void CRenderer::Draw( const std::vector<DrawItem> &items, const CParticles &particles, const Camera &camera )
{
	SHOWBUDGET_SCOPE( g_Rendering, "Render" );
	Clear();
	DrawSky();
	DrawGround( camera );
	BuildTriangles( items );
	SortIntoTiles();
	FillTiles();
	DrawParticles( particles, camera );
}

void CRenderer::Clear()
{
	SHOWBUDGET_SCOPE( g_Rendering, "Clear" );
	std::ranges::fill( m_Depth, FAR_AWAY );
}

void CRenderer::DrawSky()
{
	SHOWBUDGET_SCOPE( g_Rendering, "Sky" );
	for ( int y = 0; y < HEIGHT; y++ )
	{
		const float flUp = 1.0f - static_cast<float>( y ) / HEIGHT;
		std::fill_n( m_Picture.begin() + y * WIDTH, WIDTH,
			Pixel{ 0.15f + 0.2f * flUp, 0.2f + 0.3f * flUp, 0.35f + 0.5f * flUp } );
	}
}

// Every pixel's ray meets the plane y = 0.
void CRenderer::DrawGround( const Camera &camera )
{
	SHOWBUDGET_SCOPE( g_Rendering, "Ground" );
	for ( int y = 0; y < HEIGHT; y++ )
	{
		const float flUp = ( HEIGHT * 0.5f - static_cast<float>( y ) ) / PIXELS_PER_UNIT;
		const float flFall = camera.m_Forward.y + camera.m_Up.y * flUp;
		if ( flFall > -0.02f )
			continue;
		const float flDistance = -camera.m_Position.y / flFall;
		for ( int x = 0; x < WIDTH; x++ )
		{
			const float flSide = ( static_cast<float>( x ) - WIDTH * 0.5f ) / PIXELS_PER_UNIT;
			const Vector hit =
				camera.m_Position + ( camera.m_Forward + camera.m_Up * flUp + camera.m_Right * flSide ) * flDistance;
			const bool bDark =
				( ( static_cast<int>( hit.x + 1000.0f ) ^ static_cast<int>( hit.z + 1000.0f ) ) & 2 ) != 0;
			const float flLight = ( bDark ? 0.25f : 0.4f ) / ( 1.0f + flDistance * 0.02f );
			const auto nPixel = static_cast<size_t>( y * WIDTH + x );
			m_Picture[nPixel] = { flLight, flLight, flLight * 0.9f };
			m_Depth[nPixel] = flDistance;
		}
	}
}

void CRenderer::BuildTriangles( const std::vector<DrawItem> &items )
{
	SHOWBUDGET_SCOPE( g_Rendering, "Build triangles" );
	m_Triangles.clear();
	for ( const DrawItem &item : items )
		AddBall( item );
}

void CRenderer::AddBall( const DrawItem &item )
{
	SHOWBUDGET_SCOPE( g_Rendering, "Ball" );
	const Mesh &mesh = m_Meshes[item.m_nDetail];
	m_ViewCorners.clear();
	for ( const Vector &corner : mesh.m_Corners )
		m_ViewCorners.push_back( item.m_Ball.m_Position + corner * item.m_Ball.m_flRadius );
	for ( size_t i = 0; i < mesh.m_Triangles.size(); i += 3 )
	{
		const Vector *pCorners[3];
		Triangle triangle;
		for ( size_t nCorner = 0; nCorner < 3; nCorner++ )
		{
			pCorners[nCorner] = &m_ViewCorners[mesh.m_Triangles[i + nCorner]];
			triangle.m_X[nCorner] = ScreenX( *pCorners[nCorner] );
			triangle.m_Y[nCorner] = ScreenY( *pCorners[nCorner] );
		}
		const Vector &normal = mesh.m_Corners[mesh.m_Triangles[i]];
		const float flArea = ( triangle.m_X[1] - triangle.m_X[0] ) * ( triangle.m_Y[2] - triangle.m_Y[0] ) -
							 ( triangle.m_X[2] - triangle.m_X[0] ) * ( triangle.m_Y[1] - triangle.m_Y[0] );
		if ( flArea <= 0.5f ) // from behind, or too small to be seen
			continue;
		triangle.m_flDepth = ( pCorners[0]->z + pCorners[1]->z + pCorners[2]->z ) / 3.0f;
		triangle.m_Colour = ColourOf( item.m_Ball.m_nColour, 0.2f + 0.8f * std::max( 0.0f, Dot( normal, TO_LIGHT ) ) );
		m_Triangles.push_back( triangle );
	}
}

void CRenderer::SortIntoTiles()
{
	SHOWBUDGET_SCOPE( g_Rendering, "Sort into tiles" );
	for ( std::vector<uint32_t> &tile : m_Tiles )
		tile.clear();
	const auto Tile = []( float flPlace, int nTiles )
	{ return std::clamp( static_cast<int>( flPlace ) / TILE, 0, nTiles - 1 ); };
	for ( uint32_t i = 0; i < m_Triangles.size(); i++ )
	{
		const auto [flLeft, flRight] =
			std::minmax( { m_Triangles[i].m_X[0], m_Triangles[i].m_X[1], m_Triangles[i].m_X[2] } );
		const auto [flTop, flBottom] =
			std::minmax( { m_Triangles[i].m_Y[0], m_Triangles[i].m_Y[1], m_Triangles[i].m_Y[2] } );
		if ( flRight < 0.0f || flLeft >= WIDTH || flBottom < 0.0f || flTop >= HEIGHT )
			continue;
		for ( int nRow = Tile( flTop, TILE_ROWS ); nRow <= Tile( flBottom, TILE_ROWS ); nRow++ )
		{
			for ( int nColumn = Tile( flLeft, TILE_COLUMNS ); nColumn <= Tile( flRight, TILE_COLUMNS ); nColumn++ )
				m_Tiles[static_cast<size_t>( nRow * TILE_COLUMNS + nColumn )].push_back( i );
		}
	}
}

void CRenderer::FillTiles()
{
	SHOWBUDGET_SCOPE( g_Rendering, "Fill tiles" );
	for ( int nRow = 0; nRow < TILE_ROWS; nRow++ )
	{
		for ( int nColumn = 0; nColumn < TILE_COLUMNS; nColumn++ )
			FillTile( nColumn, nRow );
	}
}

void CRenderer::FillTile( int nColumn, int nRow )
{
	SHOWBUDGET_SCOPE( g_Rendering, "Tile" );
	for ( const uint32_t nTriangle : m_Tiles[static_cast<size_t>( nRow * TILE_COLUMNS + nColumn )] )
		FillTriangle( m_Triangles[nTriangle], nColumn * TILE, nRow * TILE );
}

// The pixels whose centres lie on the inner side of all three edges, within the tile.
void CRenderer::FillTriangle( const Triangle &triangle, int nLeft, int nTop )
{
	const float *pX = triangle.m_X;
	const float *pY = triangle.m_Y;
	const int nFirstX = std::max( nLeft, static_cast<int>( std::min( { pX[0], pX[1], pX[2] } ) ) );
	const int nFirstY = std::max( nTop, static_cast<int>( std::min( { pY[0], pY[1], pY[2] } ) ) );
	const int nLastX = std::min( { nLeft + TILE, WIDTH, static_cast<int>( std::max( { pX[0], pX[1], pX[2] } ) ) + 1 } );
	const int nLastY = std::min( { nTop + TILE, HEIGHT, static_cast<int>( std::max( { pY[0], pY[1], pY[2] } ) ) + 1 } );
	for ( int y = nFirstY; y < nLastY; y++ )
	{
		const float flY = static_cast<float>( y ) + 0.5f;
		for ( int x = nFirstX; x < nLastX; x++ )
		{
			const float flX = static_cast<float>( x ) + 0.5f;
			const auto Inside = [&]( int a, int b )
			{ return ( pX[b] - pX[a] ) * ( flY - pY[a] ) - ( flX - pX[a] ) * ( pY[b] - pY[a] ) >= 0.0f; };
			const auto nPixel = static_cast<size_t>( y * WIDTH + x );
			if ( triangle.m_flDepth >= m_Depth[nPixel] || !Inside( 0, 1 ) || !Inside( 1, 2 ) || !Inside( 2, 0 ) )
				continue;
			m_Depth[nPixel] = triangle.m_flDepth;
			m_Picture[nPixel] = triangle.m_Colour;
		}
	}
}

void CRenderer::DrawParticles( const CParticles &particles, const Camera &camera )
{
	SHOWBUDGET_SCOPE( g_Particles, "Draw particles" );
	for ( const Particle &particle : particles.Particles() )
	{
		const Vector view = camera.ToView( particle.m_Position );
		if ( view.z < 0.5f )
			continue;
		const int x = static_cast<int>( ScreenX( view ) );
		const int y = static_cast<int>( ScreenY( view ) );
		if ( x < 1 || x >= WIDTH - 1 || y < 1 || y >= HEIGHT - 1 ||
			 m_Depth[static_cast<size_t>( y * WIDTH + x )] < view.z )
			continue;
		for ( int nRow = y - 1; nRow <= y + 1; nRow++ )
		{
			for ( int nColumn = x - 1; nColumn <= x + 1; nColumn++ )
			{
				Pixel &pixel = m_Picture[static_cast<size_t>( nRow * WIDTH + nColumn )];
				pixel.r += 0.5f * particle.m_flLife;
				pixel.g += 0.3f * particle.m_flLife;
			}
		}
	}
}
} // namespace demo
