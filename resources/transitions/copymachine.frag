// shape: middle of the bar, its reach to either side
vec3 colourAt() {
    float distance = pixel.x - shape.x;
    float part = distance / shape.y;
    float left = max(0.0, 1.0 - part * part);
    float isNew = clamp(0.5 - distance / (0.2 * shape.y), 0.0, 1.0);
    return mix(fromAt(pixel), toAt(pixel), isNew) + 1.3 * left * left * vec3(0.6, 1.0, 0.8);
}
