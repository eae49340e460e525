// shape: axis, radius of the cylinder, reach of its shadow
const vec2 direction = vec2(0.70710678);
const float pi = 3.14159265;
vec3 backAt(vec2 point, float sine) {
    vec3 paper = mix(fromAt(point), vec3(0.957, 0.949, 0.933), 0.8);
    return shineOver(paper, direction * sine);
}
bool isOnPage(vec2 point) { return point.x < size.x && point.y < size.y; }
vec3 uncovered(float distance) {
    float left = max(0.0, 1.0 - distance / shape.z);
    return toAt(pixel) * (1.0 - 0.5 * left * left);
}
vec3 colourAt() {
    float beyond = dot(pixel, direction) - shape.x;
    if (beyond > shape.y) return uncovered(beyond - shape.y);
    if (beyond >= 0.0) {
        float sine = beyond / shape.y;
        float angle = asin(sine);
        vec2 upper = pixel + direction * (shape.y * (pi - angle) - beyond);
        if (isOnPage(upper)) return backAt(upper, sine);
        vec2 lower = pixel + direction * (shape.y * angle - beyond);
        if (isOnPage(lower)) return shineOver(fromAt(lower), -direction * sine);
        return uncovered(0.0);
    }
    vec2 over = pixel + direction * (pi * shape.y - 2.0 * beyond);
    float outside = max(over.x - size.x, over.y - size.y);
    if (outside < 0.0) return backAt(over, 0.0);
    float left = max(0.0, 1.0 - outside / shape.y);
    return fromAt(pixel) * (1.0 - 0.45 * left * left);
}
