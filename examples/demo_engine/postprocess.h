// What happens to the picture after it was drawn: bright parts glow, and the range is compressed to eight bits.
#pragma once

#include <cstdint>
#include <vector>

#include "renderer.h"

namespace demo
{
class CPostProcess
{
public:
	void Apply( std::vector<Pixel> &picture );
	// The finished picture, 0xBBGGRR.
	const std::vector<uint32_t> &Screen() const { return m_Screen; }

private:
	static constexpr int GLOW_WIDTH = CRenderer::WIDTH / 2;
	static constexpr int GLOW_HEIGHT = CRenderer::HEIGHT / 2;
	static constexpr int GLOW_RADIUS = 4;

	void TakeBrightParts( const std::vector<Pixel> &picture );
	void BlurRows();
	void BlurColumns();
	void AddGlow( std::vector<Pixel> &picture ) const;
	void MeasureLight( const std::vector<Pixel> &picture );
	void MapTones( const std::vector<Pixel> &picture );

	float m_flLight = 0.5f; // follows the picture's brightness
	std::vector<Pixel> m_Glow;
	std::vector<Pixel> m_Blurred;
	std::vector<uint32_t> m_Screen;
};
} // namespace demo
