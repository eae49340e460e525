// shape: edge, shade, reach
vec3 colourAt() {
    float beyond = pixel.x - shape.x;
    if (beyond < 0.0) return toAt(pixel + vec2(size.x - shape.x, 0.0));
    float left = max(0.0, 1.0 - beyond / shape.z);
    return fromAt(pixel) * (1.0 - shape.y * left * left);
}
