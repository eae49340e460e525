// shape: where the new picture begins, width of the edge
vec3 colourAt() {
    float part = clamp((pixel.x - shape.x) / shape.y, 0.0, 1.0);
    return mix(fromAt(pixel), toAt(pixel), part * part * (3.0 - 2.0 * part));
}
