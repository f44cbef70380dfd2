#include "StarChartRenderer.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLPixelTransferOptions>
#include <QOpenGLShaderProgram>
#include <QOpenGLTexture>
#include <QPainter>
#include <QPainterPath>

#include "SkyDial.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace lunaquill {

namespace {

const char *const kVertexShader = R"(#version 120
attribute vec4 vertex;
attribute vec2 in_texcoord;
varying vec2 v_texcoord;
uniform mat4 projMatrix;
uniform mat4 mvMatrix;
void main()
{
    gl_Position = projMatrix * mvMatrix * vertex;
    v_texcoord = in_texcoord;
}
)";

const char *const kFragmentShader = R"(#version 120
varying vec2 v_texcoord;
uniform sampler2D texture;
void main()
{
    gl_FragColor = texture2D(texture, v_texcoord);
}
)";

} // namespace

QSurfaceFormat StarChartSurfaceFormat()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(2, 1);
    format.setProfile(QSurfaceFormat::NoProfile);
    format.setDepthBufferSize(24);
    return format;
}

namespace {

// The globe's radius as a fraction of half the rendered image: a unit sphere
// seen from 2.7 radii away (the view matrix) with a 45-degree field of view
// shows its outline at tan(asin(1 / 2.7)) / tan(22.5) = 0.9626.
const double kGlobeFraction = 1.0 / std::sqrt(2.7 * 2.7 - 1.0) / std::tan(22.5 * M_PI / 180.0);

// The chart's dial square, in the chart's logical pixels.
double DialSize(const QPixmap &chart)
{
    const QSizeF size = chart.deviceIndependentSize();
    return std::min(size.width(), size.height());
}

} // namespace

void TurnRows(const QImage &image, int first, int count, bool opaqueToRgba, quint32 *out)
{
    const int width = image.width(), height = image.height();
    for (int k = 0; k < count; ++k, out += width) {
        const auto *row = reinterpret_cast<const quint32 *>(image.constScanLine(height - 1 - first - k));
        if (opaqueToRgba) {
            for (int x = 0; x < width; ++x) {
                const quint32 p = row[width - 1 - x];
                out[x] = 0xff000000u | (p & 0x0000ff00u) | ((p >> 16) & 0xffu) | ((p & 0xffu) << 16);
            }
        } else {
            std::reverse_copy(row, row + width, out);
        }
    }
}

QImage GlobeImage(const QPixmap &chart)
{
    if (chart.isNull())
        return QImage();
    const int side = int(std::lround(DialFace(DialSize(chart)).width() * chart.devicePixelRatio()
                                     / kGlobeFraction));
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(chart.devicePixelRatio());
    image.fill(Qt::transparent);
    return image;
}

void ClipToDialFace(QPixmap &chart, const QImage &globe)
{
    if (chart.isNull() || globe.isNull())
        return;
    const QRectF face = DialFace(DialSize(chart));
    const QSizeF side = QSizeF(globe.size()) / chart.devicePixelRatio();
    QPainterPath clip;
    clip.addEllipse(face);
    QPainter painter(&chart);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipPath(clip);
    painter.drawImage(QRectF(face.center() - QPointF(side.width(), side.height()) / 2, side), globe);
}

StarChartRenderer::StarChartRenderer(QObject *parent) : QObject(parent)
{
    view.translate(0.0f, 0.0f, -3.0f);
}

StarChartRenderer::~StarChartRenderer()
{
    // The OpenGL objects go while their context is current; the context
    // before the surface it was current on.
    if (context && surface && context->makeCurrent(surface.get())) {
        framebuffer.reset();
        texture.reset();
        program.reset();
        vertexArray.destroy();
        vertexBuffer.destroy();
        indexBuffer.destroy();
        context->doneCurrent();
    }
    context.reset();
    surface.reset();
}

bool StarChartRenderer::initialise()
{
    if (ready)
        return true;
    const QSurfaceFormat format = StarChartSurfaceFormat();
    auto newContext = std::make_unique<QOpenGLContext>();
    newContext->setFormat(format);
    if (!newContext->create())
        return false;
    auto newSurface = std::make_unique<QOffscreenSurface>();
    newSurface->setFormat(format);
    newSurface->create();
    if (!newSurface->isValid() || !newContext->makeCurrent(newSurface.get()))
        return false;
    context = std::move(newContext);
    surface = std::move(newSurface);
    initializeOpenGLFunctions();

    program = std::make_unique<QOpenGLShaderProgram>();
    if (!program->addShaderFromSourceCode(QOpenGLShader::Vertex, kVertexShader)
        || !program->addShaderFromSourceCode(QOpenGLShader::Fragment, kFragmentShader)
        || !program->link() || !program->bind()) {
        program.reset();
        context->doneCurrent();
        return false;
    }

    mesh = BuildSphereMesh();
    vertexArray.create(); // without the extension the binder below does nothing
    QOpenGLVertexArrayObject::Binder bindArray(&vertexArray);
    vertexBuffer.create();
    vertexBuffer.bind();
    vertexBuffer.allocate(mesh.vertices.data(), int(mesh.vertices.size() * sizeof(SphereVertex)));
    indexBuffer.create();
    indexBuffer.bind();
    indexBuffer.allocate(mesh.indices.data(), int(mesh.indices.size() * sizeof(uint16_t)));
    program->enableAttributeArray("vertex");
    program->setAttributeBuffer("vertex", GL_FLOAT, 0, 3, sizeof(SphereVertex));
    program->enableAttributeArray("in_texcoord");
    program->setAttributeBuffer("in_texcoord", GL_FLOAT, 3 * sizeof(float), 2,
                                sizeof(SphereVertex));
    program->release();
    ready = true;
    return true;
}

void StarChartRenderer::rotate(float angle, float yFactor, float xFactor)
{
    if (xFactor != 0.0f) {
        QMatrix4x4 turn;
        turn.rotate(angle, xFactor, 0.0f, 0.0f);
        model = turn * model;
    }
    if (yFactor != 0.0f)
        model.rotate(angle, 0.0f, yFactor, 0.0f);
}

void StarChartRenderer::prepareReferenceTexture(const QPixmap &overlay)
{
    const QImage turned = overlay.toImage().mirrored(true, true);
    texture = std::make_unique<QOpenGLTexture>(turned, QOpenGLTexture::DontGenerateMipMaps);
    texture->setMinificationFilter(QOpenGLTexture::Nearest);
    texture->setMagnificationFilter(QOpenGLTexture::Linear);
    textureUpdatable = false;
}

void StarChartRenderer::prepareTexture(const QPixmap &overlay)
{
    // Both charts are drawn from the same overlay: its texture is made once
    // and kept until the overlay changes (its cache key changes with every
    // change of its pixels).
    if (texture && overlay.cacheKey() == textureSource)
        return;
    textureSource = overlay.cacheKey();
    if (referencePath) {
        prepareReferenceTexture(overlay);
        return;
    }
    // The texels are those of the overlay converted to RGBA8888, as a texture
    // made from the image holds them: an opaque 32-bit pixel 0xffRRGGBB has
    // its red and blue swapped (and alpha set, whatever the unused byte held)
    // while it is turned; any other format is converted first.
    QImage image = overlay.toImage();
    const bool opaqueToRgba =
        image.format() == QImage::Format_RGB32 && QSysInfo::ByteOrder == QSysInfo::LittleEndian;
    if (!opaqueToRgba)
        image.convertTo(QImage::Format_RGBA8888);
    const int width = image.width(), height = image.height();

    // Minified to the nearest texel, so only the base level is ever sampled:
    // one level, of the overlay's size, written over at each change.
    if (!textureUpdatable || texture->width() != width || texture->height() != height) {
        texture = std::make_unique<QOpenGLTexture>(QOpenGLTexture::Target2D);
        texture->setFormat(QOpenGLTexture::RGBA8_UNorm);
        texture->setSize(width, height);
        texture->setMipLevels(1);
        texture->allocateStorage(QOpenGLTexture::RGBA, QOpenGLTexture::UInt8);
        texture->setMinificationFilter(QOpenGLTexture::Nearest);
        texture->setMagnificationFilter(QOpenGLTexture::Linear);
        textureUpdatable = true;
    }
    // Turned and uploaded a band of rows at a time: the band stays in the
    // processor's cache between the two, which makes the whole several
    // times quicker than turning the overlay into a buffer of its size.
    constexpr int bandRows = 16;
    turnedBand.resize(size_t(width) * bandRows);
    QOpenGLPixelTransferOptions rows;
    rows.setAlignment(4); // whole 32-bit pixels, rows without padding
    for (int first = 0; first < height; first += bandRows) {
        const int count = std::min(bandRows, height - first);
        TurnRows(image, first, count, opaqueToRgba, turnedBand.data());
        texture->setData(0, first, 0, width, count, 1, QOpenGLTexture::RGBA, QOpenGLTexture::UInt8,
                         turnedBand.data(), &rows);
    }
}

void StarChartRenderer::render(const QPixmap &overlay, QImage &target, float latitude,
                               float longitude)
{
    if (!ready || overlay.isNull() || target.isNull()
        || !context->makeCurrent(surface.get()))
        return;
    prepareTexture(overlay);

    view.setToIdentity();
    view.translate(0.0f, 0.0f, -3.0f);
    QMatrix4x4 closer;
    closer.translate(0.0f, 0.0f, 0.3f);
    view = closer * view;

    model.setToIdentity();
    model.translate(0.0f, 0.0f, 0.0f);
    rotate(latitude, 0.0f, 0.1f);
    rotate(90.0f - longitude, 0.1f, 0.0f);

    targetImage = target;
    draw();
    target = targetImage;
}

void StarChartRenderer::draw()
{
    const QSize size = targetImage.size();
    // The framebuffer is kept while the charts keep their size.
    const auto attachment = referencePath ? QOpenGLFramebufferObject::Depth
                                          : QOpenGLFramebufferObject::NoAttachment;
    if (!framebuffer || framebuffer->size() != size || framebuffer->attachment() != attachment)
        framebuffer = std::make_unique<QOpenGLFramebufferObject>(size, attachment, GL_TEXTURE_2D);
    framebuffer->bind();
    glViewport(0, 0, size.width(), size.height());
    projection.setToIdentity();
    projection.perspective(45.0f, float(size.width()) / float(size.height()), 0.01f, 100.0f);

    // The sphere's quads are flat (two corners on one circle of latitude, two
    // on the next, symmetric about their middle meridian; flat to the float
    // rounding of their corners) and together convex: with the back faces
    // culled no two drawn faces cover the same pixel, so no depth is kept or
    // compared. The reference path still compares; the render test finds the
    // same pixels from stations all round the globe.
    if (referencePath) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_DEPTH_TEST);
    } else {
        glClear(GL_COLOR_BUFFER_BIT);
        glDisable(GL_DEPTH_TEST);
    }
    glEnable(GL_CULL_FACE);
    if (!vertexArray.isCreated())
        vertexArray.create();
    QOpenGLVertexArrayObject::Binder bindArray(&vertexArray);
    program->bind();
    program->setUniformValue("projMatrix", projection);
    program->setUniformValue("mvMatrix", view * model);
    texture->bind(0);
    program->setUniformValue("texture", 0);
    glDrawElements(GL_TRIANGLES, GLsizei(mesh.indices.size()), GL_UNSIGNED_SHORT, nullptr);
    texture->release(0);
    program->release();
    if (referencePath)
        targetImage = framebuffer->toImage(true);
    else
        readBack();
    framebuffer->release();
}

void StarChartRenderer::readBack()
{
    // As QOpenGLFramebufferObject::toImage(true) gives it: premultiplied
    // ARGB32 read as GL_BGRA, top row first, at a pixel ratio of 1. The rows
    // come bottom first into a kept buffer and are copied turned over into a
    // kept image (a copy only when the last picture is still held elsewhere).
    const QSize size = targetImage.size();
    const int width = size.width(), height = size.height();
    framebufferRows.resize(size_t(width) * size_t(height));
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, width, height, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, framebufferRows.data());
    if (readImage.size() != size)
        readImage = QImage(size, QImage::Format_ARGB32_Premultiplied);
    const size_t rowBytes = size_t(width) * sizeof(quint32);
    uchar *const bits = readImage.bits();
    for (int y = 0; y < height; ++y)
        std::memcpy(bits + size_t(y) * size_t(readImage.bytesPerLine()),
                    framebufferRows.data() + size_t(height - 1 - y) * size_t(width), rowBytes);
    targetImage = readImage;
}

} // namespace lunaquill
