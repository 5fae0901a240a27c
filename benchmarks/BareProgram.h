#pragma once

#include <string>
#include <vector>

namespace ko::imagefx::benchmarks
{

class BareFramebuffer;

// The least that draws a full-screen quad with a fragment shader: GL calls, no toolkit. The
// yardstick for what a pass of the library costs. Needs a current GL context for everything, its
// destruction included.
class BareProgram
{
public:
    // `vertexShader` reads "a_vertex" and "a_texCoord".
    BareProgram(const std::string &vertexShader, const std::string &fragmentShader);
    ~BareProgram();
    BareProgram(const BareProgram &) = delete;
    BareProgram &operator=(const BareProgram &) = delete;

    // False when the texts did not compile and link.
    bool isLinked() const;
    // False when the program has no such uniform. They are set once, not for every draw: what is
    // spared there, the library is charged with.
    bool setTextureUnit(const char *name, int unit);
    bool setUniform(const char *name, const std::vector<float> &components); // one to four

    // Draws `texture`, on unit 0, over the whole of `target`; viewport and blending are the
    // caller's.
    void draw(unsigned texture, const BareFramebuffer &target) const;

private:
    unsigned m_program = 0;
    unsigned m_buffer = 0;
};

} // namespace ko::imagefx::benchmarks
