// A rasteriser that draws into memory: transforms meshes, puts triangles into tiles, and fills them with a depth test.
#pragma once

#include <cstdint>
#include <vector>

#include "particles.h"
#include "scene.h"
#include "visibility.h"

namespace demo
{
struct Pixel
{
	float r;
	float g;
	float b;
};

class CRenderer
{
public:
	static constexpr int WIDTH = 256;
	static constexpr int HEIGHT = 144;

	CRenderer();

	void Draw( const std::vector<DrawItem> &items, const CParticles &particles, const Camera &camera );
	// Row by row from the top; to be changed by what comes after.
	std::vector<Pixel> &Picture() { return m_Picture; }

private:
	static constexpr int TILE = 32; // pixels
	static constexpr int TILE_COLUMNS = ( WIDTH + TILE - 1 ) / TILE;
	static constexpr int TILE_ROWS = ( HEIGHT + TILE - 1 ) / TILE;

	struct Mesh
	{
		std::vector<Vector> m_Corners;     // on the unit ball
		std::vector<uint32_t> m_Triangles; // three corners each
	};
	struct Triangle
	{
		float m_X[3];
		float m_Y[3];
		float m_flDepth; // one for the whole of it; the triangles are small
		Pixel m_Colour;
	};

	static Mesh MakeBall( int nRings, int nSegments );
	void Clear();
	void DrawSky();
	void DrawGround( const Camera &camera );
	void BuildTriangles( const std::vector<DrawItem> &items );
	void AddBall( const DrawItem &item );
	void SortIntoTiles();
	void FillTiles();
	void FillTile( int nColumn, int nRow );
	void FillTriangle( const Triangle &triangle, int nLeft, int nTop );
	void DrawParticles( const CParticles &particles, const Camera &camera );

	std::vector<Mesh> m_Meshes; // by detail
	std::vector<Vector> m_ViewCorners;
	std::vector<Triangle> m_Triangles;
	std::vector<std::vector<uint32_t>> m_Tiles;
	std::vector<Pixel> m_Picture;
	std::vector<float> m_Depth;
};
} // namespace demo
