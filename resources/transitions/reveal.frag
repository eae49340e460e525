// shape: edge, shade, reach
vec3 colourAt() {
    float before = shape.x - pixel.x;
    if (before < 0.0) return fromAt(pixel - vec2(shape.x, 0.0));
    float left = max(0.0, 1.0 - before / shape.z);
    return toAt(pixel) * (1.0 - shape.y * left * left);
}
