// shape: edge
vec3 colourAt() {
    if (pixel.x < shape.x) return toAt(pixel + vec2(size.x - shape.x, 0.0));
    return fromAt(pixel - vec2(shape.x, 0.0));
}
