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
#include <vector>

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

// Rows first .. first + count - 1 of the 32-bit image turned by 180 degrees
// (row first of the turned image is row height - 1 - first, read from the
// right), into out, count * width pixels; with opaqueToRgba each 0x??RRGGBB
// becomes 0xffBBGGRR, the bytes R, G, B, 255 of RGBA8888 on a little-endian
// machine.
void TurnRows(const QImage &image, int first, int count, bool opaqueToRgba, quint32 *out);

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

    // Draws the way the charts were once drawn, so that a test can show the
    // quicker way draws the same pixels: a new texture from a turned copy of
    // each overlay, the depth test on, the framebuffer read back through Qt.
    void setReferencePath(bool on) { referencePath = on; textureSource = 0; }

    const QMatrix4x4 &modelMatrix() const { return model; }
    const QMatrix4x4 &viewMatrix() const { return view; }

private:
    void prepareTexture(const QPixmap &overlay);
    void prepareReferenceTexture(const QPixmap &overlay);
    void readBack();

    QImage targetImage;
    QImage readImage; // the last picture read back, reused while nobody else holds it
    std::vector<quint32> turnedBand; // a band of the overlay's rows turned by 180 degrees
    std::vector<quint32> framebufferRows; // bottom row first, as OpenGL reads them
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
    bool textureUpdatable = false; // one level, updated in place
    bool ready = false;
    bool referencePath = false;
};

} // namespace lunaquill
