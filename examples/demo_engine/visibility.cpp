#define SHOWBUDGET_PROJECT "renderer"
#include "visibility.h"

#include <algorithm>

#include "budgets.h"

namespace demo
{
namespace
{
constexpr float NEAR = 0.5f;
constexpr float FAR = 60.0f;
constexpr int TILES = 24; // of the screen, in each direction
} // namespace

const std::vector<DrawItem> &CVisibility::Choose( const CPhysics &physics, const Camera &camera, float flPart )
{
	SHOWBUDGET_SCOPE( g_Visibility, "Visibility" );
	Interpolate( physics, flPart );
	CullOutside( camera );
	CullHidden();
	ChooseDetail();
	Sort();
	return m_Items;
}

void CVisibility::Interpolate( const CPhysics &physics, float flPart )
{
	SHOWBUDGET_SCOPE( g_Visibility, "Interpolate bodies" );
	m_Balls.clear();
	for ( const Body &body : physics.Bodies() )
		m_Balls.push_back( { Mix( body.m_PositionBefore, body.m_Position, flPart ), body.m_flRadius, body.m_nColour } );
}

void CVisibility::CullOutside( const Camera &camera )
{
	SHOWBUDGET_SCOPE( g_Visibility, "Frustum" );
	m_Items.clear();
	for ( const Ball &ball : m_Balls )
	{
		const Vector view = camera.ToView( ball.m_Position );
		if ( view.z < NEAR + ball.m_flRadius || view.z > FAR || std::abs( view.x ) > view.z + ball.m_flRadius ||
			 std::abs( view.y ) > view.z + ball.m_flRadius )
			continue;
		m_Items.push_back( { { view, ball.m_flRadius, ball.m_nColour }, view.z, 0 } );
	}
}

// A ball that covers a whole tile hides what lies far behind it there.
void CVisibility::CullHidden()
{
	SHOWBUDGET_SCOPE( g_Visibility, "Occlusion" );
	m_Occluders.assign( TILES * TILES, FAR );
	const auto TileOf = []( const Vector &view )
	{
		const auto Index = []( float flPlace )
		{ return std::clamp( static_cast<int>( ( flPlace + 1.0f ) * 0.5f * TILES ), 0, TILES - 1 ); };
		return static_cast<size_t>( Index( view.y / view.z ) * TILES + Index( view.x / view.z ) );
	};
	for ( const DrawItem &item : m_Items )
	{
		if ( item.m_Ball.m_flRadius / item.m_flDepth < 2.0f / TILES )
			continue;
		float &flNearest = m_Occluders[TileOf( item.m_Ball.m_Position )];
		flNearest = std::min( flNearest, item.m_flDepth + item.m_Ball.m_flRadius );
	}
	std::erase_if( m_Items,
		[&]( const DrawItem &item ) { return item.m_flDepth > m_Occluders[TileOf( item.m_Ball.m_Position )] + 2.0f; } );
}

void CVisibility::ChooseDetail()
{
	SHOWBUDGET_SCOPE( g_Visibility, "Level of detail" );
	for ( DrawItem &item : m_Items )
	{
		const float flSize = item.m_Ball.m_flRadius / item.m_flDepth;
		item.m_nDetail = flSize > 0.08f ? 0 : flSize > 0.03f ? 1 : 2;
	}
}

void CVisibility::Sort()
{
	SHOWBUDGET_SCOPE( g_Visibility, "Sort front to back" );
	std::ranges::sort( m_Items, {}, &DrawItem::m_flDepth );
}
} // namespace demo
