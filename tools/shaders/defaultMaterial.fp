#version 120
// Default material, fragment program: Blinn-Phong, two-sided.

varying vec3 eyePosition;
varying vec3 eyeNormal;

void main()
{
    vec3 normal = normalize(gl_FrontFacing ? eyeNormal : -eyeNormal);
    vec3 light = normalize(gl_LightSource[0].position.xyz);
    float diffuse = max(dot(normal, light), 0.0);
    vec4 color = gl_FrontLightModelProduct.sceneColor + gl_FrontLightProduct[0].ambient;
    color += gl_FrontLightProduct[0].diffuse * diffuse;
    if (diffuse > 0.0) {
        vec3 halfway = normalize(light - normalize(eyePosition));
        float cosine = max(dot(normal, halfway), 0.001);
        color += gl_FrontLightProduct[0].specular * pow(cosine, gl_FrontMaterial.shininess);
    }
    gl_FragColor = vec4(color.rgb, gl_FrontMaterial.diffuse.a);
}
