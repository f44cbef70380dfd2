// The star charts: the composed map wrapped on a sphere and seen from above a
// station, drawn with OpenGL into an offscreen framebuffer and read back as an
// image, which is then clipped to the face of the sky dial.
#pragma once

#include "SphereMesh.h"

#include <QImage>
#include <QMatrix4x4>
#include <QObject>
#include <QOpenGLBuffer>
#include <QOpenGLFunctions>
#include <QOpenGLVertexArrayObject>
#include <QPixmap>
#include <QSurfaceFormat>

#include <memory>

class QOffscreenSurface;
class QOpenGLContext;
class QOpenGLFramebufferObject;
class QOpenGLShaderProgram;
class QOpenGLTexture;

namespace lunaquill {

// The one format of the context and its offscreen surface: OpenGL 2.1 without
// a profile (a compatibility context wherever a newer one is given) with a
// depth buffer, for GLSL 120 shaders. Mesa's llvmpipe and desktop drivers
// both offer it.
QSurfaceFormat StarChartSurfaceFormat();

// The image to render a chart's globe into: a square sized so that the
// globe fills the face inside the dial's ring, at the chart's device pixels.
// Null for a null chart.
QImage GlobeImage(const QPixmap &chart);

// Lays the rendered globe over the chart, centred on the dial and clipped to
// its face; outside it the chart keeps the dial's ring. A null chart is left
// alone.
void ClipToDialFace(QPixmap &chart, const QImage &globe);

// One renderer serves both charts. Created with the main window as its
// parent, it lives as long as the window; its OpenGL objects are released
// with it while the context can still be made current.
class StarChartRenderer : public QObject, protected QOpenGLFunctions
{
    Q_OBJECT

public:
    explicit StarChartRenderer(QObject *parent = nullptr);
    ~StarChartRenderer() override;

    // The context, the offscreen surface, the functions, the shaders and the
    // buffers. When no context or no surface can be had (no display, no
    // OpenGL) nothing further is set up, nothing is reported, and render()
    // leaves its target alone: the charts stay the plain dial.
    bool initialise();
    bool isReady() const { return ready; }

    // Draws overlay (an equirectangular map, 180 W at the left, 90 N at the
    // top) on the sphere seen from above (latitude, longitude), degrees, at
    // the size of target, and replaces target with the picture.
    void render(const QPixmap &overlay, QImage &target, float latitude, float longitude);

    // Turns the model by angle degrees about the x axis (multiplied on the
    // left) when xFactor is not zero, then about the y axis (in place) when
    // yFactor is not zero; only the factors' signs count.
    void rotate(float angle, float yFactor, float xFactor);

    // Draws the sphere into a framebuffer of the target's size and reads it
    // back into the target image.
    void draw();

    // Uploads the overlay with a full mipmap chain, as it once was, so that a
    // test can show the plain upload draws the same pixels.
    void setMipmapChain(bool on) { mipmapChain = on; textureSource = 0; }

    const QMatrix4x4 &modelMatrix() const { return model; }
    const QMatrix4x4 &viewMatrix() const { return view; }

private:
    void prepareTexture(const QPixmap &overlay);

    QImage targetImage;
    QImage textureImage;
    QMatrix4x4 view;
    QMatrix4x4 projection;
    QMatrix4x4 model;
    SphereMesh mesh;
    std::unique_ptr<QOpenGLContext> context;
    std::unique_ptr<QOffscreenSurface> surface;
    std::unique_ptr<QOpenGLShaderProgram> program;
    QOpenGLVertexArrayObject vertexArray;
    QOpenGLBuffer vertexBuffer{QOpenGLBuffer::VertexBuffer};
    QOpenGLBuffer indexBuffer{QOpenGLBuffer::IndexBuffer};
    std::unique_ptr<QOpenGLTexture> texture;
    std::unique_ptr<QOpenGLFramebufferObject> framebuffer;
    qint64 textureSource = 0; // cache key of the pixmap the texture was made from
    bool ready = false;
    bool mipmapChain = false;
};

} // namespace lunaquill
