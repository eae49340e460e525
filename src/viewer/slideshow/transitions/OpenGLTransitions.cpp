#include "viewer/slideshow/transitions/OpenGLTransitions.h"

#include "viewer/slideshow/transitions/TransitionShapes.h"

#include <QFile>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QVector4D>

namespace {

constexpr int fromUnit = 0;
constexpr int toUnit = 1;
constexpr int mapUnit = 2;
constexpr int shineUnit = 3;

constexpr auto vertexShader = R"(
attribute highp vec2 corner;
uniform highp vec2 size;
varying highp vec2 pixel;
void main() {
    pixel = corner * size;
    gl_Position = vec4(corner.x * 2.0 - 1.0, 1.0 - corner.y * 2.0, 0.0, 1.0);
}
)";

constexpr auto mainFunction = "void main() { gl_FragColor = vec4(colourAt(), 1.0); }\n";

QOpenGLFunctions& gl() {
    return *QOpenGLContext::currentContext()->functions();
}

QString shaderOf(TransitionStyle style) {
    switch (style) {
    case TransitionStyle::Fade:
        return QStringLiteral("fade");
    case TransitionStyle::MoveIn:
        return QStringLiteral("movein");
    case TransitionStyle::Push:
        return QStringLiteral("push");
    case TransitionStyle::Reveal:
        return QStringLiteral("reveal");
    case TransitionStyle::CopyMachine:
        return QStringLiteral("copymachine");
    case TransitionStyle::Disintegrate:
        return QStringLiteral("disintegrate");
    case TransitionStyle::Dissolve:
    case TransitionStyle::Mod:
        return QStringLiteral("threshold");
    case TransitionStyle::Flash:
        return QStringLiteral("flash");
    case TransitionStyle::PageCurl:
        return QStringLiteral("pagecurl");
    case TransitionStyle::Ripple:
        return QStringLiteral("ripple");
    case TransitionStyle::Swipe:
        return QStringLiteral("swipe");
    }
    return {};
}

QByteArray sourceOf(const QString& name) {
    QFile file(QStringLiteral(":/transitions/%1.frag").arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// nullptr if it can't be made.
std::unique_ptr<QOpenGLShaderProgram> makeProgram(const QString& name) {
    auto program = std::make_unique<QOpenGLShaderProgram>();
    const QByteArray fragments = sourceOf(QStringLiteral("common")) + sourceOf(name) + mainFunction;
    const bool isMade = program->addShaderFromSourceCode(QOpenGLShader::Vertex, vertexShader) &&
                        program->addShaderFromSourceCode(QOpenGLShader::Fragment, fragments) &&
                        program->link();
    return isMade ? std::move(program) : nullptr;
}

QVector4D vectorOf(const TransitionShapes::Threshold& shape) {
    return {shape.edge, shape.softness, static_cast<float>(shape.shadowOffset), shape.shadow};
}

QVector4D vectorOf(const TransitionShapes::Wipe& wipe) {
    return {wipe.position, wipe.width, 0, 0};
}

/// What the shader of the style is told.
QVector4D shapeOf(TransitionStyle style, const QSize& size, double progress) {
    using namespace TransitionShapes;
    switch (style) {
    case TransitionStyle::Fade:
        return {static_cast<float>(progress), 0, 0, 0};
    case TransitionStyle::MoveIn:
    case TransitionStyle::Push:
    case TransitionStyle::Reveal: {
        const Slide slide = slideAt(size, progress);
        return {static_cast<float>(slide.edge), slide.shade, slide.reach, 0};
    }
    case TransitionStyle::CopyMachine:
        return vectorOf(copyMachineAt(size, progress));
    case TransitionStyle::Disintegrate:
        return vectorOf(disintegrateAt(size, progress));
    case TransitionStyle::Dissolve:
        return vectorOf(dissolveAt(progress));
    case TransitionStyle::Mod:
        return vectorOf(modAt(progress));
    case TransitionStyle::Flash: {
        const Burst burst = flashAt(size, progress);
        return {burst.light, burst.radius, burst.mix, 0};
    }
    case TransitionStyle::PageCurl: {
        const Curl curl = pageCurlAt(size, progress);
        return {curl.axis, curl.radius, curl.reach, 0};
    }
    case TransitionStyle::Ripple: {
        const Ring ring = rippleAt(size, progress);
        return {ring.outer, ring.width, ring.lift, 0};
    }
    case TransitionStyle::Swipe:
        return vectorOf(swipeAt(size, progress));
    }
    return {};
}

void fill(const QSize& size, const void* pixels) {
    gl().glTexImage2D(
        GL_TEXTURE_2D, 0, GL_RGBA, size.width(), size.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
        pixels);
}

} // namespace

OpenGLTransitions::OpenGLTransitions() = default;

OpenGLTransitions::~OpenGLTransitions() {
    if (!QOpenGLContext::currentContext()) return;
    for (const Texture* texture : {&_from, &_to, &_map, &_shine})
        if (texture->name != 0) gl().glDeleteTextures(1, &texture->name);
}

bool OpenGLTransitions::initialize() {
    for (int style = 0; style < transitionStyleCount; ++style) {
        auto& program = _programs.at(static_cast<std::size_t>(style));
        program = makeProgram(shaderOf(static_cast<TransitionStyle>(style)));
        if (!program) return false;
    }
    _plain = makeProgram(QStringLiteral("plain"));
    return _plain != nullptr;
}

int OpenGLTransitions::largestSide() {
    GLint side = 0;
    gl().glGetIntegerv(GL_MAX_TEXTURE_SIZE, &side);
    return side;
}

bool OpenGLTransitions::bind(Texture& texture, int unit, qint64 content, bool isSmooth) {
    QOpenGLFunctions& functions = gl();
    if (texture.name == 0) functions.glGenTextures(1, &texture.name);
    functions.glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    functions.glBindTexture(GL_TEXTURE_2D, texture.name);
    if (std::exchange(texture.content, content) == content) return false;
    const GLint filter = isSmooth ? GL_LINEAR : GL_NEAREST;
    functions.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    functions.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    functions.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    functions.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return true;
}

void OpenGLTransitions::putPictures(const TransitionFrame& frame) {
    // The new picture of one transition is the old one of the next.
    if (_from.content != frame.from.cacheKey() && _to.content == frame.from.cacheKey())
        std::swap(_from, _to);
    if (bind(_from, fromUnit, frame.from.cacheKey(), true))
        fill(frame.from.size(), frame.from.constBits());
    if (bind(_to, toUnit, frame.to.cacheKey(), true)) fill(frame.to.size(), frame.to.constBits());
}

void OpenGLTransitions::putMap(const std::shared_ptr<const TransitionMap>& map) {
    // A map is known by its place in memory, which it keeps for as long as it is held here.
    if (!map || !bind(_map, mapUnit, reinterpret_cast<qint64>(map.get()), false)) return;
    _shownMap = map;
    std::vector<std::uint32_t> bytes(map->values.begin(), map->values.end());
    fill(map->size, bytes.data());
}

void OpenGLTransitions::putShine() {
    const QImage& shine = restrictedShineImage();
    if (bind(_shine, shineUnit, 0, true)) fill(shine.size(), shine.constBits());
}

void OpenGLTransitions::paint(const TransitionFrame& frame, const QSize& framebuffer) {
    const QSize size = frame.from.size();
    QOpenGLFunctions& functions = gl();
    putPictures(frame);
    putMap(frame.map);
    putShine();
    const bool isPlain = frame.progress <= 0 || frame.progress >= 1;
    QOpenGLShaderProgram& program =
        isPlain ? *_plain : *_programs.at(static_cast<std::size_t>(frame.style));
    program.bind();
    program.setUniformValue("fromPicture", fromUnit);
    program.setUniformValue("toPicture", toUnit);
    program.setUniformValue("map", mapUnit);
    program.setUniformValue("shine", shineUnit);
    program.setUniformValue("size", QSizeF(size));
    program.setUniformValue(
        "shape", isPlain ? QVector4D(frame.progress >= 1 ? 1 : 0, 0, 0, 0)
                         : shapeOf(frame.style, size, frame.progress));
    static constexpr GLfloat corners[] = {0, 0, 1, 0, 0, 1, 1, 1};
    program.enableAttributeArray("corner");
    program.setAttributeArray("corner", corners, 2);
    functions.glDisable(GL_BLEND);
    functions.glDisable(GL_DEPTH_TEST);
    functions.glViewport(0, 0, framebuffer.width(), framebuffer.height());
    functions.glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    program.disableAttributeArray("corner");
    program.release();
    functions.glActiveTexture(GL_TEXTURE0);
}
