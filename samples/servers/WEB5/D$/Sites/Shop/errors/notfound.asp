<% Response.Status = "404 Not Found" %>
<p>No such page.</p>
