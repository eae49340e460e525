// shape: light, radius, part of the new picture
vec3 colourAt() {
    float distance = length(pixel - size * 0.5) / shape.y;
    float core = max(0.0, 1.0 - distance);
    float outer = mapAt(pixel) * max(0.0, 1.0 - 0.7 * distance);
    float glow = shape.x * (core + 0.8 * outer);
    return mix(fromAt(pixel), toAt(pixel), shape.z) + glow * vec3(1.0, 0.87, 0.7);
}
